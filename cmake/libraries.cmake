# The libraries: vekcore, and one complete vekvc library per variant, each with the code of all families.

# Library code lives without the C++ runtime: no exceptions, no RTTI, linked by the C compiler's driver. Unwind tables stay,
# for debuggers and profilers.
# Single-precision operations round one by one in every variant: no contraction to fused multiply-add.
add_library(vekvc_code_options INTERFACE)
target_compile_options(vekvc_code_options INTERFACE
  $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions -fno-rtti -fno-threadsafe-statics -fvisibility=hidden
    -fvisibility-inlines-hidden -ffp-contract=off -fno-math-errno>)
target_include_directories(vekvc_code_options INTERFACE
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include> $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/src>)

# No start files: the libraries have nothing to run when they are loaded and nothing to keep.
set(vekvc_link_options -Wl,--as-needed -Wl,--no-undefined -Wl,--gc-sections)
if(NOT VEKVC_SANITIZE)
  list(APPEND vekvc_link_options -nostartfiles)
else()
  list(REMOVE_ITEM vekvc_link_options -Wl,--no-undefined)
endif()

# Writes a linker map that exports exactly the names listed in the given files, all of one symbol version.
function(vekvc_write_map map version)
  set(names "")
  foreach(list ${ARGN})
    set_property(DIRECTORY ${PROJECT_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${list})
    file(STRINGS ${list} lines REGEX "^[A-Za-z]")
    list(APPEND names ${lines})
  endforeach()
  list(JOIN names ";\n    " joined)
  file(CONFIGURE OUTPUT ${map} CONTENT "${version} {\n  global:\n    ${joined};\n  local:\n    *;\n};\n" @ONLY)
endfunction()

function(vekvc_use_map target map)
  target_link_options(${target} PRIVATE -Wl,--version-script=${map})
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${map})
endfunction()

# ---- vekcore

vekvc_write_map(${PROJECT_BINARY_DIR}/vekcore.map VEKCORE_6.1 ${PROJECT_SOURCE_DIR}/vekcore/exports.txt)
add_library(vekcore SHARED vekcore/vekcore.cpp)
add_library(vekvc::vekcore ALIAS vekcore)
target_link_libraries(vekcore PRIVATE $<BUILD_INTERFACE:vekvc_code_options>)
target_include_directories(vekcore INTERFACE
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
target_link_options(vekcore PRIVATE ${vekvc_link_options})
vekvc_use_map(vekcore ${PROJECT_BINARY_DIR}/vekcore.map)
set_target_properties(vekcore PROPERTIES LINKER_LANGUAGE C VERSION 6.1 SOVERSION 6)

# ---- the vekvc variants

# One folder of src/ each, with a list of its exports.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/families.txt)
file(STRINGS ${PROJECT_SOURCE_DIR}/src/families.txt vekvc_families)
list(TRANSFORM vekvc_families REPLACE "(.+)" "${PROJECT_SOURCE_DIR}/src/\\1/exports.txt" OUTPUT_VARIABLE vekvc_export_lists)
vekvc_write_map(${PROJECT_BINARY_DIR}/vekvc.map VEKVC_6.1 ${vekvc_export_lists})
list(TRANSFORM vekvc_families REPLACE "(.+)" "${PROJECT_SOURCE_DIR}/src/\\1/*.cpp" OUTPUT_VARIABLE vekvc_source_patterns)
file(GLOB vekvc_sources CONFIGURE_DEPENDS ${vekvc_source_patterns})

if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64|amd64")
  set(vekvc_variants px sf av az)
else()
  set(vekvc_variants px)
endif()
set(vekvc_arch_sf x86-64-v2)
set(vekvc_arch_av x86-64-v3)
set(vekvc_arch_az x86-64-v4)

# The object code of one variant, compiled from the given sources; tests of internals link it directly.
function(vekvc_add_objects code)
  add_library(vekvc-objects-${code} OBJECT ${ARGN})
  target_link_libraries(vekvc-objects-${code} PUBLIC vekvc_code_options PRIVATE OpenMP::OpenMP_CXX)
  target_compile_definitions(vekvc-objects-${code} PUBLIC VEKVC_CPU_CODE="${code}")
  if(code STREQUAL "px")
    target_compile_definitions(vekvc-objects-${code} PUBLIC VEKVC_SIMD=0)
  else()
    target_compile_definitions(vekvc-objects-${code} PUBLIC VEKVC_SIMD=1)
    target_compile_options(vekvc-objects-${code} PUBLIC -march=${vekvc_arch_${code}})
  endif()
  set(vekvc_objects_${code} $<TARGET_OBJECTS:vekvc-objects-${code}> PARENT_SCOPE)
endfunction()

# az compiles anew only what gains by it: X.cpp where an X_simd512.h stands beside it, and the version record. All else is
# the object code of av. An inline function that both need would be two bodies under one name, of which the linker keeps
# either: az's own sources have a namespace of their own.
function(vekvc_add_objects_az)
  file(GLOB wide CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/*/*_simd512.h)
  list(TRANSFORM wide REPLACE "_simd512\\.h$" ".cpp")
  set(own ${wide} ${PROJECT_SOURCE_DIR}/src/core/version.cpp)
  vekvc_add_objects(az ${own})
  target_compile_definitions(vekvc-objects-az PRIVATE vekvc=vekvc_az)
  # g++ 12 takes the undefined vectors of its own intrinsics for a mistake (GCC bug 105593).
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(vekvc-objects-az PRIVATE -Wno-uninitialized -Wno-maybe-uninitialized)
  endif()
  list(TRANSFORM own REPLACE "^${PROJECT_SOURCE_DIR}/(.+)\\.cpp$" "/\\1[.]cpp")
  list(JOIN own "|" own)
  set(vekvc_objects_az ${vekvc_objects_az} $<FILTER:$<TARGET_OBJECTS:vekvc-objects-av>,EXCLUDE,${own}> PARENT_SCOPE)
endfunction()

function(vekvc_add_variant code)
  add_library(vekvc-${code} SHARED ${vekvc_objects_${code}})
  target_include_directories(vekvc-${code} INTERFACE
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  target_link_libraries(vekvc-${code} PUBLIC vekcore PRIVATE OpenMP::OpenMP_CXX)
  target_link_options(vekvc-${code} PRIVATE ${vekvc_link_options} -Wl,-soname,libvekvc.so.6)
  if(NOT code STREQUAL "px")
    target_link_options(vekvc-${code} PRIVATE -Wl,-z,${vekvc_arch_${code}})
  endif()
  vekvc_use_map(vekvc-${code} ${PROJECT_BINARY_DIR}/vekvc.map)
  set_target_properties(vekvc-${code} PROPERTIES LINKER_LANGUAGE C NO_SONAME ON
    PREFIX "" OUTPUT_NAME "libvekvc-${code}" SUFFIX ".so.6.1" BUILD_RPATH "\$ORIGIN:\$ORIGIN/../..")
endfunction()

foreach(code ${vekvc_variants})
  if(code STREQUAL "az")
    vekvc_add_objects_az()
  else()
    vekvc_add_objects(${code} ${vekvc_sources})
  endif()
  vekvc_add_variant(${code})
endforeach()

# The plain names of the build tree: what programs link, and what the loader prefers on better processors.
if("sf" IN_LIST vekvc_variants)
  set(vekvc_default sf)
else()
  set(vekvc_default px)
endif()
add_library(vekvc INTERFACE)
add_library(vekvc::vekvc ALIAS vekvc)
target_link_libraries(vekvc INTERFACE vekvc-${vekvc_default})
set(lib ${PROJECT_BINARY_DIR}/lib)
file(MAKE_DIRECTORY ${lib})
file(CREATE_LINK libvekvc-${vekvc_default}.so.6.1 ${lib}/libvekvc.so.6 SYMBOLIC)
file(CREATE_LINK libvekvc.so.6 ${lib}/libvekvc.so SYMBOLIC)
foreach(code ${vekvc_variants})
  if(NOT code STREQUAL vekvc_default AND DEFINED vekvc_arch_${code})
    file(MAKE_DIRECTORY ${lib}/glibc-hwcaps/${vekvc_arch_${code}})
    file(CREATE_LINK ../../libvekvc-${code}.so.6.1 ${lib}/glibc-hwcaps/${vekvc_arch_${code}}/libvekvc.so.6 SYMBOLIC)
  endif()
  # One folder per variant: LD_LIBRARY_PATH set to it runs a program with exactly this variant.
  file(MAKE_DIRECTORY ${lib}/variant/${code})
  file(CREATE_LINK ../../libvekvc-${code}.so.6.1 ${lib}/variant/${code}/libvekvc.so.6 SYMBOLIC)
endforeach()

# A static archive of one chosen variant, and of vekcore.
if(VEKVC_STATIC_VARIANT)
  add_library(vekcore_static STATIC vekcore/vekcore.cpp)
  add_library(vekvc::vekcore_static ALIAS vekcore_static)
  target_link_libraries(vekcore_static PRIVATE $<BUILD_INTERFACE:vekvc_code_options>)
  target_include_directories(vekcore_static INTERFACE
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  set_target_properties(vekcore_static PROPERTIES OUTPUT_NAME vekcore)
  add_library(vekvc_static STATIC ${vekvc_objects_${VEKVC_STATIC_VARIANT}})
  add_library(vekvc::vekvc_static ALIAS vekvc_static)
  target_include_directories(vekvc_static INTERFACE
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  target_link_libraries(vekvc_static PUBLIC vekcore_static OpenMP::OpenMP_CXX)
  set_target_properties(vekvc_static PROPERTIES OUTPUT_NAME vekvc)
endif()

# All variants, for programs that are run from the build tree.
add_custom_target(vekvc_libraries DEPENDS vekcore)
foreach(code ${vekvc_variants})
  add_dependencies(vekvc_libraries vekvc-${code})
endforeach()
