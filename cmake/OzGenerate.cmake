# oz_generate(TARGET target MODEL model.oz FUNCTIONS Model/f ... [VARIABLES Model/x ...] [LANGUAGE C++] [NAME name] [LINK])
#
# Compiles functions and global variables of a model into C++ when the target is built, adds the result to the target
# and lets it use the array library. The header is <name>.h; the name is that of the model's file unless NAME tells
# another one. The files are made again when the model or the compiler changes.
#
#   TARGET     a library or an executable that exists already
#   FUNCTIONS  paths with slashes: Model/f, object/part/f
#   VARIABLES  the same; the word ALL stands for all typed variables
#   LINK       also the wrappers <name>if.cc, for calls over the link, and the library that they need
function(oz_generate)
  cmake_parse_arguments(PARSE_ARGV 0 arg "LINK" "TARGET;MODEL;LANGUAGE;NAME" "FUNCTIONS;VARIABLES")
  if(arg_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "oz_generate: unknown arguments: ${arg_UNPARSED_ARGUMENTS}")
  endif()
  foreach(needed TARGET MODEL)
    if(NOT arg_${needed})
      message(FATAL_ERROR "oz_generate: ${needed} is missing")
    endif()
  endforeach()
  if(NOT TARGET ${arg_TARGET})
    message(FATAL_ERROR "oz_generate: there is no target ${arg_TARGET}")
  endif()
  if(NOT arg_FUNCTIONS AND NOT arg_VARIABLES)
    message(FATAL_ERROR "oz_generate: neither FUNCTIONS nor VARIABLES are given")
  endif()
  if(NOT arg_LANGUAGE)
    set(arg_LANGUAGE C++)
  endif()
  if(NOT arg_LANGUAGE STREQUAL "C++")
    message(FATAL_ERROR "oz_generate: the language ${arg_LANGUAGE} is not supported, only C++")
  endif()

  get_filename_component(model ${arg_MODEL} ABSOLUTE)
  if(NOT arg_NAME)
    get_filename_component(arg_NAME ${model} NAME_WE)
  endif()
  set(folder ${CMAKE_CURRENT_BINARY_DIR}/oz/${arg_TARGET})
  file(MAKE_DIRECTORY ${folder})
  set(base ${folder}/${arg_NAME})
  set(sources ${base}.cc)
  set(wrappers)
  if(arg_LINK)
    list(APPEND sources ${base}if.cc)
    set(wrappers -w)
  endif()
  set(entities)
  foreach(function ${arg_FUNCTIONS})
    list(APPEND entities f:${function})
  endforeach()
  foreach(variable ${arg_VARIABLES})
    if(variable STREQUAL "ALL")
      set(variable "")
    endif()
    list(APPEND entities v:${variable})
  endforeach()

  add_custom_command(
    OUTPUT ${sources} ${base}.h ${base}.icc
    COMMAND oz::ozgen ${wrappers} ${arg_LANGUAGE} ${folder} ${arg_NAME} ${model} ${entities}
    DEPENDS ${model} oz::ozgen
    COMMENT "Generating ${arg_NAME}.cc from ${arg_MODEL}"
    VERBATIM)
  target_sources(${arg_TARGET} PRIVATE ${sources} ${base}.h)
  # Other targets that use this one see the header, too.
  target_include_directories(${arg_TARGET} PUBLIC $<BUILD_INTERFACE:${folder}>)
  target_link_libraries(${arg_TARGET} PUBLIC oz::lumenmat)
  if(arg_LINK)
    target_link_libraries(${arg_TARGET} PUBLIC oz::alginter)
  endif()
endfunction()
