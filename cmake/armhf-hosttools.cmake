# Included after project() by armhf-toolchain.cmake: Qt's code generators run
# on the build machine, so they are the host's, whatever the sysroot names.
foreach(tool qmake moc rcc uic qdbuscpp2xml qdbusxml2cpp)
  find_program(TGUI_HOST_QT_${tool} ${tool} PATHS /usr/lib/qt5/bin NO_DEFAULT_PATH
               NO_CMAKE_FIND_ROOT_PATH)
  if(NOT TGUI_HOST_QT_${tool})
    message(FATAL_ERROR "host Qt tool ${tool} not found: install qtbase5-dev-tools")
  endif()
  if(NOT TARGET Qt5::${tool})
    add_executable(Qt5::${tool} IMPORTED GLOBAL)
    set_target_properties(Qt5::${tool} PROPERTIES IMPORTED_LOCATION "${TGUI_HOST_QT_${tool}}")
  endif()
endforeach()
