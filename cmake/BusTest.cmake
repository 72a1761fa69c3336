# Everything that runs under the thread sanitizer.
add_custom_target(thread_tests)

# corvane_add_bus_test(NAME SOURCES file... [LEVEL n] [LIBRARIES target...]): a gtest executable on the virtual USB bus
# (sim/bridge), with levels 0 to n of the library, or without them when it tests from outside.
#
# Its main (tests/support/VirtualBusMain.cpp) sees to the umockdev preload, in the right order with the sanitizers, so the
# program also runs by hand. ctest starts one process for each test.
add_library(corvane_virtual_bus_main OBJECT ${PROJECT_SOURCE_DIR}/tests/support/VirtualBusMain.cpp)
target_include_directories(corvane_virtual_bus_main PRIVATE ${PROJECT_SOURCE_DIR}/sim)
target_link_libraries(corvane_virtual_bus_main PRIVATE corvane_options GTest::gmock)
corvane_use_precompiled(corvane_virtual_bus_main tests)

function(corvane_add_bus_test name)
  cmake_parse_arguments(arg "" "LEVEL" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  corvane_use_precompiled(${name} tests)
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(${name} PRIVATE corvane_options corvane_sim_bridge corvane_virtual_bus_main GTest::gmock ${arg_LIBRARIES})
  if(DEFINED arg_LEVEL)
    corvane_link_levels(${name} ${arg_LEVEL})
  endif()
  add_dependencies(thread_tests ${name})
  gtest_discover_tests(${name} PROPERTIES TIMEOUT ${CORVANE_TEST_TIMEOUT} LABELS threads)
endfunction()
