# What belongs to an installation beside the programs. Documents and examples lie to each other as they
# do here, so that the links between them hold.
set(example_files PATTERN CMakeLists.txt EXCLUDE PATTERN __pycache__ EXCLUDE)

if(CMAKE_SYSTEM_NAME STREQUAL "Windows")
  install(FILES packaging/windows/register.cmd packaging/windows/unregister.cmd
    packaging/windows/example.vbs packaging/windows/README.txt
    DESTINATION .)
  install(DIRECTORY docs DESTINATION . PATTERN man EXCLUDE)
  install(DIRECTORY examples/plugins DESTINATION examples ${example_files})
  # What hosts and plug-ins are written against.
  install(FILES include/kestra/plugin.h DESTINATION include/kestra)
  install(FILES front/com/Sorrel.idl ${CMAKE_BINARY_DIR}/generated/front/com/SORRELLib.h
    DESTINATION include)
  return()
endif()

find_program(KESTRA_GZIP gzip REQUIRED)
function(kestra_compress source compressed)
  add_custom_command(OUTPUT ${compressed}
    COMMAND ${KESTRA_GZIP} -9nc ${source} > ${compressed}
    DEPENDS ${source}
    VERBATIM)
endfunction()
# Who answers for a package is who builds it for others.
set(KESTRA_MAINTAINER "The developers of Kestra <kestra@localhost>" CACHE STRING
  "The maintainer of the Debian package, with a mail address")
set(man_page ${CMAKE_BINARY_DIR}/kestra.1.gz)
set(changelog ${CMAKE_BINARY_DIR}/changelog.gz)
kestra_compress(${CMAKE_SOURCE_DIR}/docs/man/kestra.1 ${man_page})
configure_file(packaging/debian/changelog.in changelog @ONLY)
kestra_compress(${CMAKE_BINARY_DIR}/changelog ${changelog})
add_custom_target(kestra_compressed ALL DEPENDS ${man_page} ${changelog})
install(FILES ${man_page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${changelog} DESTINATION ${CMAKE_INSTALL_DOCDIR})

install(FILES packaging/kestra.bash
  DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME kestra)
install(FILES README.md packaging/debian/copyright DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} PATTERN man EXCLUDE)
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR} ${example_files})
# Where every Python 3 of Debian looks.
install(FILES examples/python/kestra.py DESTINATION lib/python3/dist-packages)
