# SPDX-License-Identifier: Apache-2.0
# Most of a source's compilation is its headers', so a build from nothing is shorter with several
# sources at a time. The sources that go into a phone are compiled one by one in every build.
option(QOREXT_UNITY "compile sources of the modem, the tool and the tests together" OFF)

# The sources of one folder become one.
function(compile_folders_together target)
  set_target_properties(${target} PROPERTIES UNITY_BUILD ${QOREXT_UNITY} UNITY_BUILD_MODE GROUP)
  get_target_property(sources ${target} SOURCES)
  foreach(source ${sources})
    get_filename_component(folder ${source} DIRECTORY)
    set_source_files_properties(${source} PROPERTIES UNITY_GROUP "${folder}")
  endforeach()
endfunction()

# Headers compiled beforehand, where the target has sources enough to make it pay.
function(precompile target)
  set(few 2)
  if(QOREXT_UNITY)
    set(few 16)
  endif()
  get_target_property(sources ${target} SOURCES)
  list(LENGTH sources count)
  if(count GREATER few)
    target_precompile_headers(${target} PRIVATE ${ARGN})
  endif()
endfunction()
