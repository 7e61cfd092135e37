# cmake --install puts the library, for packagers, where ./package puts it in the zip.
set(VERSION ${PROJECT_VERSION})
set(MAJOR ${PROJECT_VERSION_MAJOR})
set(MINOR ${PROJECT_VERSION_MINOR})
set(PATCH ${PROJECT_VERSION_PATCH})
set(DESCRIPTION ${PROJECT_DESCRIPTION})
foreach(name version.h korvaneConfigVersion.cmake korvane.pc)
  configure_file(packaging/${name}.in packaging/${name} @ONLY)
endforeach()

install(TARGETS korvane RUNTIME DESTINATION bin ARCHIVE DESTINATION lib COMPONENT library)
install(FILES $<TARGET_FILE:korvane>.debug ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/korvane.pdb DESTINATION bin COMPONENT library)
install(FILES include/korvane/korvane.h bindings/cpp/korvane/korvane.hpp bindings/cpp/korvane/recording.hpp
              ${PROJECT_BINARY_DIR}/packaging/version.h
        DESTINATION include/korvane COMPONENT library)
install(FILES packaging/korvaneConfig.cmake ${PROJECT_BINARY_DIR}/packaging/korvaneConfigVersion.cmake
        DESTINATION lib/cmake/korvane COMPONENT library)
install(FILES ${PROJECT_BINARY_DIR}/packaging/korvane.pc DESTINATION lib/pkgconfig COMPONENT library)
