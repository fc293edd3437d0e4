# Debian packages by cpack: libvekcore6, libvekvc6 with all variants, libvekvc-dev, vekvc-tools.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vekvc)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "vekvc built using CMake")  # cpack's own: others it puts before each package's
set(CPACK_PACKAGE_CONTACT "vekvc maintainers <vekvc@packages.debian.org>" CACHE STRING "Who made the packages")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL libvekcore6 libvekvc6 libvekvc-dev)
if(VEKVC_BUILD_APPS)
  list(APPEND CPACK_COMPONENTS_ALL vekvc-tools)
endif()
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${lib})
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)

set(vekvc_package_files ${PROJECT_BINARY_DIR}/package-files)
# vekvc_package(NAME section summary description): what the control file says, and the documents that each package has.
function(vekvc_package name section summary description)
  string(TOUPPER ${name} key)
  set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${name} PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_DESCRIPTION "${summary}\n${description}" PARENT_SCOPE)
  install(FILES ${vekvc_package_files}/copyright ${vekvc_package_files}/changelog.Debian.gz
    DESTINATION share/doc/${name} COMPONENT ${name} EXCLUDE_FROM_ALL)
  if(name MATCHES "^(lib.*)6$")
    set(files ${vekvc_package_files}/${name})
    file(WRITE ${files}/shlibs "${CMAKE_MATCH_1} 6 ${name} (>= ${PROJECT_VERSION})\n")
    file(WRITE ${files}/triggers "activate-noawait ldconfig\n")
    set(CPACK_DEBIAN_${key}_PACKAGE_CONTROL_EXTRA ${files}/shlibs ${files}/triggers PARENT_SCOPE)
  endif()
endfunction()
vekvc_package(libvekcore6 libs "core library of the vekvc video-coding kernels"
  "Memory, status texts and version of the vekvc libraries.")
vekvc_package(libvekvc6 libs "block kernels for video encoders, decoders and transcoders"
  "Entropy coding of coefficients, quantization, transforms, prediction, block\nmatching and loop filters for MPEG-1/2, MPEG-4 Part 2, H.263, H.261, H.264,\nVC-1, AVS and DV; deinterlacing, denoising and conversion. The dynamic loader\ntakes the variant that the processor runs.")
vekvc_package(libvekvc-dev libdevel "headers of the vekvc video-coding kernels"
  "What programs that use the vekvc kernels are built with: headers, packages for\nCMake and pkg-config, and examples.")
vekvc_package(vekvc-tools video "bit-exact video decoder and filter on the vekvc kernels"
  "vekdec decodes MPEG-1/2, MPEG-4 Part 2, H.263, H.261, H.264, VC-1, AVS and DV\nto planar frames or contact sheets; vekproc deinterlaces, denoises, resizes,\nrotates and converts uncompressed video.")
set(CPACK_COMPONENT_LIBVEKVC6_DEPENDS libvekcore6)
set(CPACK_COMPONENT_LIBVEKVC-DEV_DEPENDS libvekvc6 libvekcore6)
set(CPACK_COMPONENT_VEKVC-TOOLS_DEPENDS libvekvc6 libvekcore6)
set(CPACK_DEBIAN_VEKVC-TOOLS_PACKAGE_RECOMMENDS libavformat59)

file(WRITE ${vekvc_package_files}/copyright
"Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/
Upstream-Name: vekvc

Files: *
Copyright: 2026 the vekvc authors
License: Apache-2.0

License: Apache-2.0
 On Debian systems the text of the license is /usr/share/common-licenses/Apache-2.0.
")
file(TIMESTAMP ${PROJECT_SOURCE_DIR}/CHANGELOG.md vekvc_changed "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(WRITE ${vekvc_package_files}/changelog.Debian
"vekvc (${PROJECT_VERSION}) unstable; urgency=medium

  * See CHANGELOG.md.

 -- ${CPACK_PACKAGE_CONTACT}  ${vekvc_changed}
")
find_program(GZIP gzip REQUIRED)
execute_process(COMMAND ${GZIP} -9nkf changelog.Debian WORKING_DIRECTORY ${vekvc_package_files})
# All variants have one SONAME and lie side by side, for programs that load one by its path. ldconfig takes the last by
# name, the one for all processors.
file(WRITE ${vekvc_package_files}/overrides "libvekvc6: ldconfig-symlink-referencing-wrong-file *\n")
install(FILES ${vekvc_package_files}/overrides DESTINATION share/lintian/overrides RENAME libvekvc6
  COMPONENT libvekvc6 EXCLUDE_FROM_ALL)
install(DIRECTORY examples/ DESTINATION share/doc/libvekvc-dev/examples COMPONENT libvekvc-dev EXCLUDE_FROM_ALL
  FILES_MATCHING PATTERN "*.c")

include(CPack)
