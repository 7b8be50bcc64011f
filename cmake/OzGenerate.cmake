# oz_generate(TARGET target MODEL model.oz FUNCTIONS Model/f ... [VARIABLES Model/x ...] [LANGUAGE C++|Fortran90]
#             [NAME name] [LINK | LINK_PROGRAM [NO_MAIN]] [CALLBACKS Model/ask ...])
#
# Compiles functions and global variables of a model into C++ or Fortran when the target is built, adds the result to
# the target and lets it use the libraries of generated code. The header is <name>.h; the name is that of the model's
# file unless NAME tells another one. The files are made again when the model or the compiler changes.
#
# In Fortran the files have the name of the model itself, since the module zc_<Model> includes one of them by it; NAME
# has no effect. The project must have the language Fortran enabled.
#
#   TARGET     a library or an executable that exists already
#   FUNCTIONS  paths with slashes: Model/f, object/part/f
#   VARIABLES  the same; the word ALL stands for all typed variables
#   CALLBACKS  functions that the host answers (language "Alg"); they need the link
#   LINK       also the wrappers <name>if.cc, for calls over the link, and the library that they need
#   LINK_PROGRAM
#              the target, an executable, becomes a link program: the wrappers, and a main program that announces the
#              functions to its host and serves calls of them. With NO_MAIN the target has a main program of its own,
#              which gives the variables their values and calls AL_IF_main(argc, argv, AL_IF_functions,
#              AL_IF_function_count) of alginter.h (in Fortran: alif_install_all() and then ALIF_MAIN()).
function(oz_generate)
  cmake_parse_arguments(PARSE_ARGV 0 arg "LINK;LINK_PROGRAM;NO_MAIN" "TARGET;MODEL;LANGUAGE;NAME"
                        "FUNCTIONS;VARIABLES;CALLBACKS")
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
  if(arg_LINK_PROGRAM AND NOT arg_FUNCTIONS)
    message(FATAL_ERROR "oz_generate: a LINK_PROGRAM needs FUNCTIONS")
  endif()
  if(arg_CALLBACKS AND NOT arg_LINK AND NOT arg_LINK_PROGRAM)
    message(FATAL_ERROR "oz_generate: CALLBACKS go with LINK or LINK_PROGRAM")
  endif()
  if(arg_NO_MAIN AND NOT arg_LINK_PROGRAM)
    message(FATAL_ERROR "oz_generate: NO_MAIN goes with LINK_PROGRAM")
  endif()
  if(NOT arg_LANGUAGE)
    set(arg_LANGUAGE C++)
  endif()
  if(NOT arg_LANGUAGE MATCHES "^(C\\+\\+|Fortran90)$")
    message(FATAL_ERROR "oz_generate: the language ${arg_LANGUAGE} is not supported, only C++ and Fortran90")
  endif()

  get_filename_component(model ${arg_MODEL} ABSOLUTE)
  set(fortran FALSE)
  if(arg_LANGUAGE STREQUAL "Fortran90")
    set(fortran TRUE)
    if(NOT TARGET oz::zentrica)
      message(FATAL_ERROR "oz_generate: there is no runtime for Fortran; was a Fortran compiler found?")
    endif()
    file(STRINGS ${model} head REGEX "^ *model +[A-Za-z0-9$]+" LIMIT_COUNT 1)
    string(REGEX REPLACE "^ *model +([A-Za-z0-9$]+).*" "\\1" arg_NAME "${head}")
  endif()
  if(NOT arg_NAME)
    get_filename_component(arg_NAME ${model} NAME_WE)
  endif()
  set(folder ${CMAKE_CURRENT_BINARY_DIR}/oz/${arg_TARGET})
  file(MAKE_DIRECTORY ${folder})
  set(base ${folder}/${arg_NAME})
  if(fortran)
    set(suffix .f90)
    set(headers ${base}Ext.f90inc ${base}.f90mac)
    set(runtime oz::zentrica)
    set(interface oz::zentrica)
  else()
    set(suffix .cc)
    set(headers ${base}.h ${base}.icc)
    set(runtime oz::lumenmat)
    set(interface oz::alginter)
  endif()
  set(sources ${base}${suffix})
  set(wrappers)
  if(arg_LINK_PROGRAM)
    set(arg_LINK TRUE)
  endif()
  if(arg_LINK)
    list(APPEND sources ${base}if${suffix})
    set(wrappers -w)
  endif()
  set(functions)
  foreach(function ${arg_FUNCTIONS})
    list(APPEND functions f:${function})
  endforeach()
  # In Fortran a function with a body must come first, since it begins the part of the functions.
  foreach(callback ${arg_CALLBACKS})
    list(APPEND functions c:${callback})
  endforeach()
  set(variables)
  foreach(variable ${arg_VARIABLES})
    if(variable STREQUAL "ALL")
      set(variable "")
    endif()
    list(APPEND variables v:${variable})
  endforeach()
  # In Fortran no declaration may follow the first function.
  set(entities ${functions} ${variables})
  if(fortran)
    set(entities ${variables} ${functions})
  endif()

  add_custom_command(
    OUTPUT ${sources} ${headers}
    COMMAND oz::ozgen ${wrappers} ${arg_LANGUAGE} ${folder} ${arg_NAME} ${model} ${entities}
    DEPENDS ${model} oz::ozgen
    COMMENT "Generating ${arg_NAME}${suffix} from ${arg_MODEL}"
    VERBATIM)
  if(arg_LINK_PROGRAM)
    set(no_main)
    if(arg_NO_MAIN)
      set(no_main --no-main)
    endif()
    add_custom_command(
      OUTPUT ${base}_link${suffix}
      COMMAND oz::oztm ${no_main} -o ${base}_link${suffix} ${base}.tm
      DEPENDS ${sources} oz::oztm
      COMMENT "Generating ${arg_NAME}_link${suffix} from ${arg_NAME}.tm"
      VERBATIM)
    target_sources(${arg_TARGET} PRIVATE ${base}_link${suffix})
  endif()
  target_sources(${arg_TARGET} PRIVATE ${sources} ${headers})
  if(fortran)
    # Of two targets with one model in a directory each has its own module files.
    get_target_property(modules ${arg_TARGET} Fortran_MODULE_DIRECTORY)
    if(NOT modules)
      set(modules ${folder}/modules)
      set_target_properties(${arg_TARGET} PROPERTIES Fortran_MODULE_DIRECTORY ${modules})
      target_include_directories(${arg_TARGET} PUBLIC $<BUILD_INTERFACE:${modules}>)
    endif()
    set_source_files_properties(${sources} PROPERTIES Fortran_PREPROCESS ON COMPILE_OPTIONS -cpp
                                                      OBJECT_DEPENDS "${headers}")
  else()
    # With these GCC checks a subscript ahead of a loop that does not change it: it splits loops on conditions, and finds
    # the sizes of an array that is returned in a variable of the function instead of the caller's. A short loop that
    # lies across two lines of the cache takes half as long again.
    set_source_files_properties(${sources} PROPERTIES COMPILE_OPTIONS
                                "$<$<CXX_COMPILER_ID:GNU>:-funswitch-loops;-fno-elide-constructors;-falign-loops=32>")
  endif()
  # Other targets that use this one see the header, too.
  target_include_directories(${arg_TARGET} PUBLIC $<BUILD_INTERFACE:${folder}>)
  target_link_libraries(${arg_TARGET} PUBLIC ${runtime})
  if(arg_LINK)
    target_link_libraries(${arg_TARGET} PUBLIC ${interface})
  endif()
endfunction()
