# Installation: the library and its platform libraries as the package TGUILib
# (find_package(TGUILib) gives TGUI::TGUILib; pkg-config TGUILib gives the same flags).
include(CMakePackageConfigHelpers)

set(TGUI_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/TGUILib)
set(TGUI_INCLUDE_ROOT ${CMAKE_INSTALL_INCLUDEDIR}/TGUILib)
get_property(TGUI_PLATFORM_LIBS GLOBAL PROPERTY TGUI_PLATFORM_LIBRARIES)

# Run paths of the installed files, relative so that the prefix may move: the
# programs find the library, the library its platform libraries. A system
# library folder needs none.
if(NOT CMAKE_INSTALL_FULL_LIBDIR IN_LIST CMAKE_PLATFORM_IMPLICIT_LINK_DIRECTORIES)
  file(RELATIVE_PATH tgui_bin_to_lib ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
  set(CMAKE_INSTALL_RPATH "\$ORIGIN/${tgui_bin_to_lib}")
  set_target_properties(TGUILib ${TGUI_PLATFORM_LIBS} PROPERTIES INSTALL_RPATH "\$ORIGIN")
endif()

install(TARGETS TGUILib ${TGUI_PLATFORM_LIBS} EXPORT TGUILibTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT devel
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT devel
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)

# Headers by folder ("widgets/CTavoButton.h"), and by class name ("CTavoButton.h")
# through a forwarding header for each header that is named after the class it declares.
# Headers of function families keep their folder: "log/GuiLog.h", never "GuiLog.h".
get_target_property(tgui_headers TGUILib TGUI_PUBLIC_HEADERS)
set(forward_dir ${PROJECT_BINARY_DIR}/include/forward)
file(REMOVE_RECURSE ${forward_dir})
foreach(header IN LISTS tgui_headers)
  file(RELATIVE_PATH rel ${PROJECT_SOURCE_DIR}/src ${header})
  get_filename_component(sub ${rel} DIRECTORY)
  get_filename_component(name ${rel} NAME_WE)
  install(FILES ${header} DESTINATION ${TGUI_INCLUDE_ROOT}/${sub} COMPONENT devel)
  file(STRINGS ${header} declares REGEX "^(class|struct) +(TGUI_EXPORT +)?${name}( |:|$)")
  if(declares)
    file(WRITE ${forward_dir}/${name}.h "#include \"${rel}\"\n")
  endif()
endforeach()
install(DIRECTORY ${forward_dir}/ DESTINATION ${TGUI_INCLUDE_ROOT} COMPONENT devel)
install(FILES ${PROJECT_BINARY_DIR}/include/tgui_export.h DESTINATION ${TGUI_INCLUDE_ROOT}
        COMPONENT devel)
foreach(lib IN LISTS TGUI_PLATFORM_LIBS)
  get_target_property(lib_headers ${lib} TGUI_PUBLIC_HEADERS)
  install(FILES ${lib_headers} DESTINATION ${TGUI_INCLUDE_ROOT}/${lib} COMPONENT devel)
endforeach()

install(EXPORT TGUILibTargets NAMESPACE TGUI:: DESTINATION ${TGUI_INSTALL_CMAKEDIR}
        COMPONENT devel)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/TGUILibConfig.cmake.in
  ${PROJECT_BINARY_DIR}/TGUILibConfig.cmake INSTALL_DESTINATION ${TGUI_INSTALL_CMAKEDIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/TGUILibConfigVersion.cmake
  VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/TGUILibConfig.cmake
              ${PROJECT_BINARY_DIR}/TGUILibConfigVersion.cmake
        DESTINATION ${TGUI_INSTALL_CMAKEDIR} COMPONENT devel)

# pkg-config: the platform libraries' include folders and names join the library's own.
set(TGUI_PC_CFLAGS "-I\${includedir}/TGUILib")
set(TGUI_PC_LIBS "-L\${libdir} -lTGUILib")
foreach(lib IN LISTS TGUI_PLATFORM_LIBS)
  string(APPEND TGUI_PC_CFLAGS " -I\${includedir}/TGUILib/${lib}")
  string(APPEND TGUI_PC_LIBS " -l${lib}")
endforeach()
# Relocatable: the prefix is found from where the .pc file lies.
file(RELATIVE_PATH pc_up /x/${CMAKE_INSTALL_LIBDIR}/pkgconfig /x)
string(REGEX REPLACE "/$" "" pc_up "${pc_up}")
set(TGUI_PC_PREFIX "\${pcfiledir}/${pc_up}")
configure_file(${PROJECT_SOURCE_DIR}/cmake/TGUILib.pc.in ${PROJECT_BINARY_DIR}/TGUILib.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/TGUILib.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
        COMPONENT devel)
