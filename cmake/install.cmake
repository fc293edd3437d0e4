# Installation: headers, libraries, the links that the loader follows, and the packages for CMake and pkg-config.
include(CMakePackageConfigHelpers)

set(vekvc_installed_targets vekcore vekvc-${vekvc_default})
foreach(code ${vekvc_variants})
  if(NOT code STREQUAL "px" AND NOT code STREQUAL vekvc_default)
    list(APPEND vekvc_installed_targets vekvc-${code})
  endif()
endforeach()
if(VEKVC_STATIC_VARIANT)
  list(APPEND vekvc_installed_targets vekvc_static vekcore_static)
endif()

# Components are Debian packages.
foreach(target ${vekvc_installed_targets})
  if(target STREQUAL "vekcore")
    set(vekvc_component libvekcore6)
  else()
    set(vekvc_component libvekvc6)
  endif()
  install(TARGETS ${target}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${vekvc_component} NAMELINK_COMPONENT libvekvc-dev
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT libvekvc-dev)
endforeach()
install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT libvekvc-dev FILES_MATCHING PATTERN "*.h")

# libvekvc.so -> libvekvc.so.6 -> the default variant, and the better ones where the loader looks for them.
install(FILES ${lib}/libvekvc.so.6 DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT libvekvc6)
install(FILES ${lib}/libvekvc.so DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT libvekvc-dev)
foreach(code ${vekvc_variants})
  if(NOT code STREQUAL vekvc_default AND DEFINED vekvc_arch_${code})
    install(FILES ${lib}/glibc-hwcaps/${vekvc_arch_${code}}/libvekvc.so.6
      DESTINATION ${CMAKE_INSTALL_LIBDIR}/glibc-hwcaps/${vekvc_arch_${code}} COMPONENT libvekvc6)
  endif()
endforeach()

# The OpenMP runtime by its names: a C project that links the archive needs no OpenMP package of CMake. GCC finds its own;
# that of others lies where CMake found it.
set(vekvc_openmp_names ${OpenMP_CXX_LIB_NAMES})
set(vekvc_openmp_folders)
set(vekvc_openmp_flags)
foreach(name ${vekvc_openmp_names})
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    get_filename_component(folder ${OpenMP_${name}_LIBRARY} DIRECTORY)
    list(APPEND vekvc_openmp_folders ${folder})
    list(APPEND vekvc_openmp_flags -L${folder})
  endif()
  list(APPEND vekvc_openmp_flags -l${name})
endforeach()
list(JOIN vekvc_openmp_flags " " vekvc_openmp_flags)

configure_package_config_file(cmake/vekvc-config.cmake.in ${PROJECT_BINARY_DIR}/vekvc-config.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vekvc PATH_VARS CMAKE_INSTALL_LIBDIR CMAKE_INSTALL_INCLUDEDIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vekvc-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/vekvc-config.cmake ${PROJECT_BINARY_DIR}/vekvc-config-version.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vekvc COMPONENT libvekvc-dev)

# Relative to the .pc file, so that an installed tree can be moved; folders given as absolute paths stay what they are.
if(IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR})
  set(vekvc_pc_prefix ${CMAKE_INSTALL_PREFIX})
else()
  file(RELATIVE_PATH vekvc_pc_up /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
  string(REGEX REPLACE "/$" "" vekvc_pc_prefix "\${pcfiledir}/${vekvc_pc_up}")
endif()
foreach(folder LIBDIR INCLUDEDIR)
  if(IS_ABSOLUTE ${CMAKE_INSTALL_${folder}})
    set(vekvc_pc_${folder} ${CMAKE_INSTALL_${folder}})
  else()
    set(vekvc_pc_${folder} "\${prefix}/${CMAKE_INSTALL_${folder}}")
  endif()
endforeach()
foreach(package vekvc vekcore)
  configure_file(cmake/${package}.pc.in ${PROJECT_BINARY_DIR}/${package}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${package}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT libvekvc-dev)
endforeach()
