# The shared library: all levels, exporting exactly the names in the two exported-symbols.txt lists.
set(CORVANE_SYMBOL_LISTS ${PROJECT_SOURCE_DIR}/src/api/exported-symbols.txt
                         ${PROJECT_SOURCE_DIR}/src/usbserial/exported-symbols.txt)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${CORVANE_SYMBOL_LISTS})

set(corvane_version_script ${PROJECT_BINARY_DIR}/corvanecif.map)
set(corvane_exports "")
foreach(list IN LISTS CORVANE_SYMBOL_LISTS)
  file(STRINGS ${list} names)
  foreach(name IN LISTS names)
    string(APPEND corvane_exports "    ${name};\n")
  endforeach()
endforeach()
file(CONFIGURE OUTPUT ${corvane_version_script} CONTENT "{\n  global:\n@corvane_exports@  local:\n    *;\n};\n" @ONLY)

add_library(corvanecif SHARED)
foreach(level IN LISTS CORVANE_LEVELS)
  target_link_libraries(corvanecif PRIVATE corvane_level_${level})
endforeach()
target_link_libraries(corvanecif PRIVATE corvane_options PkgConfig::LIBUSB Threads::Threads ${CMAKE_DL_LIBS})
target_include_directories(corvanecif INTERFACE ${PROJECT_SOURCE_DIR}/src/api ${PROJECT_SOURCE_DIR}/src/usbserial)
set_target_properties(corvanecif PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
                                            LINK_DEPENDS ${corvane_version_script})
target_link_options(
  corvanecif
  PRIVATE
  -Wl,--version-script=${corvane_version_script}
  # Calls between exported functions stay inside, whatever the host program defines.
  -Wl,-Bsymbolic
  # The bridge's threads may outlive a dlclose.
  -Wl,-z,nodelete
  -Wl,-z,relro,-z,now)
if(NOT CORVANE_SANITIZE)
  target_link_options(corvanecif PRIVATE -Wl,--no-undefined)
endif()

install(TARGETS corvanecif LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES ${PROJECT_SOURCE_DIR}/src/api/CorvaneCIF.h ${PROJECT_SOURCE_DIR}/src/usbserial/ftd2xx.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/corvane)
configure_file(${PROJECT_SOURCE_DIR}/cmake/corvanecif.pc.in ${PROJECT_BINARY_DIR}/corvanecif.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/corvanecif.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
