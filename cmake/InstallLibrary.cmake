# Where the library, its header, its pkg-config file and its CMake package go.
include(CMakePackageConfigHelpers)

install(TARGETS kestra EXPORT kestraTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
)
install(FILES ${CMAKE_SOURCE_DIR}/include/kestra/kestra.h ${CMAKE_SOURCE_DIR}/include/kestra/plugin.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kestra
)

# The installed tree may be moved, so the file finds it from where it stands itself.
set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH KESTRA_UP_FROM_PKGCONFIG /prefix/${pkgconfig_dir} /prefix)
configure_file(${CMAKE_SOURCE_DIR}/cmake/kestra.pc.in kestra.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/kestra.pc
  DESTINATION ${pkgconfig_dir}
)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/kestra)
install(EXPORT kestraTargets NAMESPACE kestra:: FILE kestraConfig.cmake DESTINATION ${package_dir})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/kestraConfigVersion.cmake
  COMPATIBILITY SameMinorVersion
)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/kestraConfigVersion.cmake DESTINATION ${package_dir})
