# qelm_room(NAME FOLDER [LIBRARIES...]) makes the library qelm_NAME of the sources right in FOLDER (not below it:
# a folder inside is a room of its own). A room without a source is an interface library.
#
# With g++ all sources of a room get the standard library's usual headers precompiled, which is a fifth of the time
# that it takes to compile them. Not with clang++, which so shows where an #include is missing.
function(qelm_room name folder)
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/${folder}/*.cc)
  # What only the program has, or only the module.
  list(FILTER sources EXCLUDE REGEX "/(main|module)\\.cc$")
  if(sources)
    add_library(qelm_${name} STATIC ${sources})
    target_link_libraries(qelm_${name} PUBLIC ${ARGN})
    target_include_directories(qelm_${name} PUBLIC ${CMAKE_SOURCE_DIR}/src)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
      target_compile_options(qelm_${name} PRIVATE -fpch-preprocess)  # ccache needs it
      target_precompile_headers(qelm_${name} PRIVATE <algorithm> <array> <cstdint> <functional> <map> <memory>
        <optional> <span> <string> <string_view> <unordered_map> <vector>)
    endif()
  else()
    add_library(qelm_${name} INTERFACE)
    target_link_libraries(qelm_${name} INTERFACE ${ARGN})
    target_include_directories(qelm_${name} INTERFACE ${CMAKE_SOURCE_DIR}/src)
  endif()
endfunction()

set(QELM_TEST_DEFINITIONS QELM_SOURCE_DIR="${CMAKE_SOURCE_DIR}" QELM_BINARY_DIR="${CMAKE_BINARY_DIR}")

# The helpers of tests/support, which know the contract with the host and nothing else: a library that is made once.
function(qelm_test_support)
  if(TARGET qelm_test_support)
    return()
  endif()
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/tests/support/*.cc)
  add_library(qelm_test_support STATIC ${sources})
  target_link_libraries(qelm_test_support PUBLIC qelm_host_interface)
  target_include_directories(qelm_test_support PUBLIC ${CMAKE_SOURCE_DIR}/tests)
  target_compile_definitions(qelm_test_support PRIVATE ${QELM_TEST_DEFINITIONS})
  target_link_libraries(qelm_test_support PUBLIC GTest::gtest)
  target_precompile_headers(qelm_test_support PRIVATE <gtest/gtest.h> <memory> <string> <string_view> <vector>)
endfunction()

# qelm_tests(NAME LIBRARIES...) makes the test program test_NAME of tests/NAME/*.cc, with the helpers of
# tests/support, and hands its cases to CTest.
function(qelm_tests name)
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/tests/${name}/*.cc)
  if(sources)
    qelm_test_support()
    add_executable(test_${name} ${sources})
    target_link_libraries(test_${name} PRIVATE qelm_test_support ${ARGN} GTest::gtest GTest::gtest_main)
    target_include_directories(test_${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
    target_compile_definitions(test_${name} PRIVATE ${QELM_TEST_DEFINITIONS})
    # A precompiled header serves only what is compiled as it was.
    set_target_properties(test_${name} PROPERTIES POSITION_INDEPENDENT_CODE OFF)
    target_compile_options(test_${name} PRIVATE -fPIC)
    target_precompile_headers(test_${name} REUSE_FROM qelm_test_support)
    add_test(NAME ${name} COMMAND test_${name})
  endif()
endfunction()
