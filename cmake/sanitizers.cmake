# SPDX-License-Identifier: Apache-2.0
# QOREXT_SANITIZE is a -fsanitize= list (for example "address,undefined"); QOREXT_COVERAGE counts
# lines and branches; QOREXT_FUZZ adds the fuzz targets. The presets set them.
set(QOREXT_SANITIZE "" CACHE STRING "sanitizers to build with")
option(QOREXT_COVERAGE "count covered lines" OFF)
option(QOREXT_FUZZ "build the fuzz targets" OFF)

if(QOREXT_SANITIZE)
  add_compile_options(-fsanitize=${QOREXT_SANITIZE} -fno-sanitize-recover=all
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${QOREXT_SANITIZE})
endif()
# What fuzzers run most; without it they would get nowhere.
function(optimize_for_fuzzing)
  if(QOREXT_FUZZ)
    foreach(target ${ARGN})
      target_compile_options(${target} PRIVATE -O1)
    endforeach()
  endif()
endfunction()

if(QOREXT_COVERAGE)
  add_compile_options(--coverage -fprofile-update=atomic)
  add_link_options(--coverage)
endif()
