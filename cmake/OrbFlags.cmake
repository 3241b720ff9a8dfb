# Flags of everything that is built here. Arithmetic follows the source: no contraction into fused operations, no
# reassociation, so that every machine and every preset computes the same bits.
find_program(ORB_CCACHE ccache)
if(ORB_CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${ORB_CCACHE})
endif()

set(CMAKE_CXX_FLAGS_RELEASE "-O3 -DNDEBUG")
set(CMAKE_CXX_FLAGS_DEBUG "-O1 -g")
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

add_library(orb_flags INTERFACE)
target_compile_options(orb_flags INTERFACE
  -ffp-contract=off -fno-math-errno -fno-trapping-math
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual)
if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
  target_compile_options(orb_flags INTERFACE -Wno-pass-failed)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
  # GCC 12 loses the rounding of two neighbouring doubles to float when it packs straight-line code into vectors and
  # widens them again: a = (float)x, b = (float)y, both kept as doubles, keep all their bits. Loops are not affected.
  target_compile_options(orb_flags INTERFACE -fno-tree-slp-vectorize)
endif()
if(ORBIMG_WERROR)
  target_compile_options(orb_flags INTERFACE -Werror)
endif()
if(ORBIMG_SANITIZE)
  add_compile_options(-fsanitize=${ORBIMG_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all -g1)
  add_link_options(-fsanitize=${ORBIMG_SANITIZE})
endif()

# orb_add_library(NAME GLOB...): a shared library of ours from every source that the patterns name.
function(orb_add_library name)
  file(GLOB sources CONFIGURE_DEPENDS ${ARGN})
  add_library(${name} SHARED ${sources})
  add_library(orbimg::${name} ALIAS ${name})
  target_include_directories(${name} PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/orbimg-${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}>)
  target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:orb_flags>)
  set_target_properties(${name} PROPERTIES VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}
    INSTALL_RPATH "$ORIGIN")
  target_compile_features(${name} PUBLIC cxx_std_20)
endfunction()
