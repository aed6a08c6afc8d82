# Most of a source's compilation is its headers', so sources can be compiled several at a time. Not
# those that go into a phone: these are compiled one by one in every build.
option(QOREXT_UNITY_TESTS "compile the tests' sources together" OFF)
option(QOREXT_UNITY_TOOLS "compile the sources of the modem and the tool together" OFF)

# The sources of one folder become one.
function(compile_folders_together target)
  set_target_properties(${target} PROPERTIES
    UNITY_BUILD ${QOREXT_UNITY_TOOLS} UNITY_BUILD_MODE GROUP)
  get_target_property(sources ${target} SOURCES)
  foreach(source ${sources})
    get_filename_component(folder ${source} DIRECTORY)
    set_source_files_properties(${source} PROPERTIES UNITY_GROUP "${folder}")
  endforeach()
endfunction()

# For sources whose file-local names are another's, too.
function(compile_alone)
  set_source_files_properties(${ARGN} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
endfunction()
