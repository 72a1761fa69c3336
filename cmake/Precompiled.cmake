# Headers compiled once for many files. Only to build sooner: the release preset does without, and so finds a file that
# leans on an include it does not make.
option(CORVANE_PRECOMPILED "Compile common headers once" OFF)

# corvane_precompiled_headers(NAME header... [LIBRARIES target...]) compiles a set of headers with the options of the
# calling folder and those that the libraries ask for; corvane_use_precompiled(TARGET NAME) gives it to a target that is
# compiled with the same ones.
function(corvane_precompiled_headers name)
  cmake_parse_arguments(arg "" "" "LIBRARIES" ${ARGN})
  if(CORVANE_PRECOMPILED)
    set(source ${PROJECT_BINARY_DIR}/precompiled/${name}.cpp)
    file(CONFIGURE OUTPUT ${source} CONTENT "// Carries the precompiled headers of ${name}.\n")
    add_library(corvane_precompiled_${name} OBJECT ${source})
    target_link_libraries(corvane_precompiled_${name} PRIVATE corvane_options ${arg_LIBRARIES})
    target_precompile_headers(corvane_precompiled_${name} PRIVATE ${arg_UNPARSED_ARGUMENTS})
  endif()
endfunction()

function(corvane_use_precompiled target name)
  if(CORVANE_PRECOMPILED)
    target_precompile_headers(${target} REUSE_FROM corvane_precompiled_${name})
  endif()
endfunction()
