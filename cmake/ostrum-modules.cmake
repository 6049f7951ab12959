# Compiles TOLL sources in a build.
#
#   toll_add_module(NAME SOURCE... [TARGETS kob c java] [INCLUDES DIRECTORY...] [OPTIONS OPTION...])
#
# NAME      target that stands for the outputs. With c among the TARGETS it is a static library of the
#           generated C, whose headers reach what links it; else it is built with everything.
# SOURCE    each becomes an output of every kind wanted, in the current binary directory
# TARGETS   kinds of output; default: kob
# INCLUDES  directories of used modules; those of the sources are searched anyway, before them
# OPTIONS   more options of toll, such as -g or --check-bounds
#
# An output is made again when any source that was read for it changes, used modules included. The
# property TOLL_OUTPUTS of the target lists the files made.
function(toll_add_module name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "TARGETS;INCLUDES;OPTIONS")
  if(NOT arg_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "toll_add_module: ${name} has no source")
  endif()
  if(NOT arg_TARGETS)
    set(arg_TARGETS kob)
  endif()
  set(extensions)
  set(options ${arg_OPTIONS})
  foreach(target IN LISTS arg_TARGETS)
    if(target STREQUAL "kob")
      list(APPEND extensions .kob)
    elseif(target STREQUAL "c")
      list(APPEND extensions .h .c)
    elseif(target STREQUAL "java")
      list(APPEND extensions .java)
    else()
      message(FATAL_ERROR "toll_add_module: ${target} is no target of toll")
    endif()
    list(APPEND options --target=${target})
  endforeach()

  set(directories)
  foreach(source IN LISTS arg_UNPARSED_ARGUMENTS)
    cmake_path(ABSOLUTE_PATH source NORMALIZE OUTPUT_VARIABLE path)
    cmake_path(GET path PARENT_PATH directory)
    list(APPEND directories ${directory})
  endforeach()
  foreach(directory IN LISTS arg_INCLUDES)
    cmake_path(ABSOLUTE_PATH directory NORMALIZE)
    list(APPEND directories ${directory})
  endforeach()
  list(REMOVE_DUPLICATES directories)
  foreach(directory IN LISTS directories)
    list(APPEND options -I ${directory})
  endforeach()

  set(all_outputs)
  foreach(source IN LISTS arg_UNPARSED_ARGUMENTS)
    cmake_path(ABSOLUTE_PATH source NORMALIZE OUTPUT_VARIABLE path)
    cmake_path(GET path STEM LAST_ONLY base)
    set(output ${CMAKE_CURRENT_BINARY_DIR}/${base})
    list(TRANSFORM extensions PREPEND ${output} OUTPUT_VARIABLE outputs)
    # A module that is the only output may have any name: it is named whole.
    set(named ${output})
    if(extensions STREQUAL ".kob")
      set(named ${outputs})
    endif()
    add_custom_command(OUTPUT ${outputs}
      COMMAND ostrum::toll ${options} -MD -MF ${output}.d -o ${named} ${path}
      DEPENDS ${path} ostrum::toll
      DEPFILE ${output}.d
      COMMENT "Compiling ${source}"
      VERBATIM)
    list(APPEND all_outputs ${outputs})
  endforeach()

  if("c" IN_LIST arg_TARGETS)
    add_library(${name} STATIC ${all_outputs})
    target_include_directories(${name} PUBLIC ${CMAKE_CURRENT_BINARY_DIR})
    target_link_libraries(${name} PUBLIC ostrum::tollrt)
    set_target_properties(${name} PROPERTIES C_STANDARD 11 C_EXTENSIONS OFF LINKER_LANGUAGE C)
  else()
    add_custom_target(${name} ALL DEPENDS ${all_outputs})
  endif()
  set_target_properties(${name} PROPERTIES TOLL_OUTPUTS "${all_outputs}")
endfunction()
