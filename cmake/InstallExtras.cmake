# What belongs to an installation beside the programs.
if(CMAKE_SYSTEM_NAME STREQUAL "Windows")
  install(FILES packaging/windows/register.cmd packaging/windows/unregister.cmd
    packaging/windows/example.vbs packaging/windows/README.txt
    DESTINATION .)
  install(FILES docs/language.md docs/embedding.md docs/security.md DESTINATION docs)
  install(DIRECTORY docs/modules DESTINATION docs)
  return()
endif()

find_program(KESTRA_GZIP gzip REQUIRED)
function(kestra_compress source compressed)
  add_custom_command(OUTPUT ${compressed}
    COMMAND ${KESTRA_GZIP} -9nc ${CMAKE_SOURCE_DIR}/${source} > ${compressed}
    DEPENDS ${CMAKE_SOURCE_DIR}/${source}
    VERBATIM)
endfunction()
set(man_page ${CMAKE_BINARY_DIR}/kestra.1.gz)
set(changelog ${CMAKE_BINARY_DIR}/changelog.gz)
kestra_compress(docs/man/kestra.1 ${man_page})
kestra_compress(packaging/debian/changelog ${changelog})
add_custom_target(kestra_compressed ALL DEPENDS ${man_page} ${changelog})
install(FILES ${man_page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${changelog} DESTINATION ${CMAKE_INSTALL_DOCDIR})

install(FILES packaging/kestra.bash
  DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME kestra)
install(FILES README.md packaging/debian/copyright docs/language.md docs/embedding.md
  docs/recipes.md docs/security.md docs/windows-volumes.md docs/paths-on-linux.md
  DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs/modules DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY examples/c examples/plugins examples/python
  DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples
  PATTERN CMakeLists.txt EXCLUDE PATTERN __pycache__ EXCLUDE)
# Where every Python 3 of Debian looks.
install(FILES examples/python/kestra.py DESTINATION lib/python3/dist-packages)
