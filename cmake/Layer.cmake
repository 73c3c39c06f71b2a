# updown_layer(NAME SOURCES ... DEPENDS ... [QT])
#
# One static library for one layer. DEPENDS names the layers that its headers and sources may
# include; the test `layers` fails on an include that is not covered by it. Includes are written
# from src/: "wire/attributes.h".
function(updown_layer name)
  cmake_parse_arguments(ARG "QT" "" "SOURCES;DEPENDS;LINKS" ${ARGN})
  add_library(updown_${name} STATIC ${ARG_SOURCES})
  target_include_directories(updown_${name} PUBLIC "${PROJECT_SOURCE_DIR}/src")
  if(ARG_QT)
    target_link_libraries(updown_${name} PUBLIC updown_qt_options Qt6::Widgets)
  else()
    target_link_libraries(updown_${name} PUBLIC updown_options Threads::Threads)
    set_target_properties(updown_${name} PROPERTIES AUTOMOC OFF AUTORCC OFF)
  endif()
  foreach(layer IN LISTS ARG_DEPENDS)
    target_link_libraries(updown_${name} PUBLIC updown_${layer})
  endforeach()
  target_link_libraries(updown_${name} PUBLIC ${ARG_LINKS})
endfunction()

# updown_test(NAME SOURCES ... LINKS ... [QT])
#
# One test program; each of its cases becomes a test of ctest. QT programs run on the offscreen
# platform and bring their own main (tests/support/qt_main.cpp).
function(updown_test name)
  cmake_parse_arguments(ARG "QT" "TIMEOUT" "SOURCES;LINKS" ${ARGN})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 60)
  endif()
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}")
  target_link_libraries(${name} PRIVATE ${ARG_LINKS} GTest::gmock)
  set(properties TIMEOUT ${ARG_TIMEOUT})
  if(ARG_QT)
    target_sources(${name} PRIVATE "${PROJECT_SOURCE_DIR}/tests/support/qt_main.cpp")
    target_link_libraries(${name} PRIVATE updown_qt_options Qt6::Widgets Qt6::Test)
  else()
    target_link_libraries(${name} PRIVATE updown_options GTest::gmock_main)
    set_target_properties(${name} PROPERTIES AUTOMOC OFF AUTORCC OFF)
  endif()
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST PROPERTIES ${properties})
endfunction()
