# The library is built as one object library per level of the map of folders (cmake/levels.txt). A unit test links the
# levels up to its own, so a call that runs against the arrows does not link.
#
# Level 0 comes in two: platform and usbserial do not know each other, and tests put a scripted bridge in the place
# of usbserial.
corvane_precompiled_headers(
  levels
  <algorithm> <array> <chrono> <functional> <map> <memory> <mutex> <optional> <string> <string_view> <vector>)
set(CORVANE_LEVELS platform usbserial 1 2 3 4 5 6)
foreach(level IN LISTS CORVANE_LEVELS)
  set(target corvane_level_${level})
  add_library(${target} OBJECT)
  target_include_directories(${target} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(${target} PRIVATE corvane_options)
  corvane_use_precompiled(${target} levels)
endforeach()

set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/levels.txt)
file(STRINGS ${PROJECT_SOURCE_DIR}/cmake/levels.txt lines REGEX "^src/")
foreach(line IN LISTS lines)
  string(REGEX MATCH "^(src/[^ ]+) +([0-9]+)" matched "${line}")
  set(folder ${CMAKE_MATCH_1})
  set(level ${CMAKE_MATCH_2})
  if(level EQUAL 0)
    cmake_path(GET folder FILENAME level)
  endif()
  set(CORVANE_LEVEL_OF_${folder} ${level})
endforeach()

# corvane_sources(file...) adds files of the calling folder to the level that the map gives the folder.
function(corvane_sources)
  cmake_path(RELATIVE_PATH CMAKE_CURRENT_SOURCE_DIR BASE_DIRECTORY ${PROJECT_SOURCE_DIR} OUTPUT_VARIABLE folder)
  if(NOT DEFINED CORVANE_LEVEL_OF_${folder})
    message(FATAL_ERROR "${folder} is not in cmake/levels.txt")
  endif()
  list(TRANSFORM ARGN PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
  target_sources(corvane_level_${CORVANE_LEVEL_OF_${folder}} PRIVATE ${ARGN})
endfunction()

# corvane_link_levels(TARGET LEVEL [SCRIPTED_BRIDGE]) links levels 0 to LEVEL into a target. With SCRIPTED_BRIDGE the
# target brings its own FT_* functions and usbserial stays out.
function(corvane_link_levels target top)
  cmake_parse_arguments(arg "SCRIPTED_BRIDGE" "" "" ${ARGN})
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(${target} PRIVATE corvane_level_platform Threads::Threads ${CMAKE_DL_LIBS})
  if(NOT arg_SCRIPTED_BRIDGE)
    target_link_libraries(${target} PRIVATE corvane_level_usbserial PkgConfig::LIBUSB)
  endif()
  foreach(level RANGE 1 ${top})
    if(level GREATER 0 AND NOT level GREATER top)
      target_link_libraries(${target} PRIVATE corvane_level_${level})
    endif()
  endforeach()
endfunction()
