# What a build for Windows needs beside the system's own: libraries that are headers alone, which
# serve every system, and GoogleTest out of its source.

# Vista and everything later; what is newer is looked up at run time.
add_compile_definitions(_WIN32_WINNT=0x0600 WIN32_LEAN_AND_MEAN NOMINMAX UNICODE _UNICODE)
enable_language(RC)
# The products depend on nothing that Windows does not bring.
add_link_options(-static)

# All programs in one directory, wherever the user puts that.
set(CMAKE_INSTALL_BINDIR .)

# The host's include directory cannot be searched as a whole: it holds the headers of its system.
set(host_headers ${CMAKE_BINARY_DIR}/headers)
file(MAKE_DIRECTORY ${host_headers})
function(host_header_library target folder)
  if(NOT EXISTS /usr/include/${folder})
    message(FATAL_ERROR "The headers of ${folder} are not installed.")
  endif()
  file(CREATE_LINK /usr/include/${folder} ${host_headers}/${folder} SYMBOLIC)
  add_library(${target} INTERFACE IMPORTED GLOBAL)
  target_include_directories(${target} SYSTEM INTERFACE ${host_headers})
endfunction()
host_header_library(fmt::fmt-header-only fmt)
target_compile_definitions(fmt::fmt-header-only INTERFACE FMT_HEADER_ONLY)
host_header_library(CLI11::CLI11 CLI)
host_header_library(nlohmann_json::nlohmann_json nlohmann)

# The archive alone, never the library beside it that would have to be brought along.
add_library(ZLIB::ZLIB STATIC IMPORTED GLOBAL)
find_library(KESTRA_ZLIB libz.a REQUIRED)
set_target_properties(ZLIB::ZLIB PROPERTIES IMPORTED_LOCATION ${KESTRA_ZLIB})

function(make_google_test)
  set(BUILD_SHARED_LIBS OFF)
  set(INSTALL_GTEST OFF)
  set(CMAKE_CXX_CLANG_TIDY "")
  add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
  foreach(target gtest gtest_main gmock gmock_main)
    target_compile_options(${target} PRIVATE -w)
  endforeach()
endfunction()

# What is given to others goes without debug information, which stays beside it in a file of its own.
function(split_debug_information target)
  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND ${CMAKE_OBJCOPY} --only-keep-debug $<TARGET_FILE:${target}> $<TARGET_FILE:${target}>.debug
    COMMAND ${CMAKE_STRIP} --strip-debug $<TARGET_FILE:${target}>
    COMMAND ${CMAKE_OBJCOPY} --add-gnu-debuglink=$<TARGET_FILE:${target}>.debug $<TARGET_FILE:${target}>
    VERBATIM)
endfunction()

# A library that Kestra loads: OLE's byte strings, and the mark of a plug-in in its version resource.
function(windows_plugin target comments)
  set(resource ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc)
  file(CONFIGURE OUTPUT ${resource} @ONLY CONTENT [[
#include <winver.h>
1 VERSIONINFO
FILEVERSION 1,0,0,0
FILETYPE VFT_DLL
BEGIN
  BLOCK "StringFileInfo"
  BEGIN
    BLOCK "040904B0"
    BEGIN
      VALUE "Comments", "@comments@"
      VALUE "FileVersion", "1.0"
    END
  END
  BLOCK "VarFileInfo"
  BEGIN
    VALUE "Translation", 0x0409, 1200
  END
END
]])
  target_sources(${target} PRIVATE ${resource})
  target_link_libraries(${target} PRIVATE oleaut32)
endfunction()
