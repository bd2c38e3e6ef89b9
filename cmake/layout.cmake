# Runs the layout check as the first step of every build, again whenever a source file changes.
file(GLOB_RECURSE pellwin_layout_files CONFIGURE_DEPENDS
     ${PROJECT_SOURCE_DIR}/core/*.h ${PROJECT_SOURCE_DIR}/core/*.cpp
     ${PROJECT_SOURCE_DIR}/probe/*.h ${PROJECT_SOURCE_DIR}/probe/*.cpp
     ${PROJECT_SOURCE_DIR}/store/*.h ${PROJECT_SOURCE_DIR}/store/*.cpp
     ${PROJECT_SOURCE_DIR}/app/*.h ${PROJECT_SOURCE_DIR}/app/*.cpp
     ${PROJECT_SOURCE_DIR}/ui/*.h ${PROJECT_SOURCE_DIR}/ui/*.cpp
     ${PROJECT_SOURCE_DIR}/bench/*.h ${PROJECT_SOURCE_DIR}/bench/*.cpp
     ${PROJECT_SOURCE_DIR}/testing/*.h ${PROJECT_SOURCE_DIR}/testing/*.cpp)
add_custom_command(
  OUTPUT ${PROJECT_BINARY_DIR}/layout.stamp
  COMMAND ${CMAKE_COMMAND} -DROOT=${PROJECT_SOURCE_DIR} -P ${PROJECT_SOURCE_DIR}/cmake/check_layout.cmake
  COMMAND ${CMAKE_COMMAND} -E touch ${PROJECT_BINARY_DIR}/layout.stamp
  DEPENDS ${pellwin_layout_files} ${PROJECT_SOURCE_DIR}/cmake/check_layout.cmake
  COMMENT "Checking the include directions of the layout"
  VERBATIM)
add_custom_target(pellwin_layout ALL DEPENDS ${PROJECT_BINARY_DIR}/layout.stamp)

# Proof that the check bites: a scratch tree with one forbidden include must fail it.
add_test(NAME Layout.AnIncludeAgainstTheDirectionFailsTheCheck
         COMMAND ${CMAKE_COMMAND} -DCHECK=${PROJECT_SOURCE_DIR}/cmake/check_layout.cmake
                 -DSCRATCH=${PROJECT_BINARY_DIR}/layout-check-test
                 -P ${PROJECT_SOURCE_DIR}/cmake/layout_check_test.cmake)
