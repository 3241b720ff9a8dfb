# headers_alone: compiles every installed header as the first and only line of a source of its own, so that none leans on
# what another happens to include. It is no part of the default build.
file(GLOB_RECURSE orb_headers RELATIVE ${PROJECT_SOURCE_DIR} CONFIGURE_DEPENDS
  ${PROJECT_SOURCE_DIR}/platform/*.h ${PROJECT_SOURCE_DIR}/orbmath/*.h ${PROJECT_SOURCE_DIR}/orbimg/*.h)
list(FILTER orb_headers EXCLUDE REGEX "_(internal|kernels)\\.h$")

set(orb_header_sources)
foreach(header IN LISTS orb_headers)
  file(STRINGS ${PROJECT_SOURCE_DIR}/${header} private_includes REGEX "#include <.*_(internal|kernels)\\.h>")
  if(private_includes)
    message(FATAL_ERROR "${header} is installed and includes what is not: ${private_includes}")
  endif()
  set(source ${PROJECT_BINARY_DIR}/headers_alone/${header}.cc)
  # Twice: a header without a guard fails here.
  file(CONFIGURE OUTPUT ${source} CONTENT "#include <@header@>\n#include <@header@>\n" @ONLY)
  list(APPEND orb_header_sources ${source})
endforeach()

add_library(headers_alone OBJECT EXCLUDE_FROM_ALL ${orb_header_sources})
target_link_libraries(headers_alone PRIVATE orbimg orb_flags)
target_compile_options(headers_alone PRIVATE -Werror)
