# Test programs: each is added through tav_add_test, so every one is built, flagged and
# registered with CTest the same way.
include_guard(GLOBAL)
include(GoogleTest)

# tav_add_test(<name> SOURCES <file>... [LIBRARIES <target>...] [DATA_DIR <dir>])
#
# A GoogleTest program linked with the shared test support (main, log capture, builders)
# and the given libraries. Its tests are discovered one CTest test each; they find their
# data files through TAV_TEST_DATA, by default <calling folder>/data.
function(tav_add_test name)
  cmake_parse_arguments(PARSE_ARGV 1 TAV_TEST "" "DATA_DIR" "SOURCES;LIBRARIES")
  if(TAV_TEST_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "tav_add_test(${name}): unknown arguments ${TAV_TEST_UNPARSED_ARGUMENTS}")
  endif()
  if(NOT TAV_TEST_SOURCES)
    message(FATAL_ERROR "tav_add_test(${name}): SOURCES is required")
  endif()
  if(NOT TAV_TEST_DATA_DIR)
    set(TAV_TEST_DATA_DIR ${CMAKE_CURRENT_SOURCE_DIR}/data)
  endif()

  add_executable(${name} ${TAV_TEST_SOURCES})
  target_link_libraries(${name} PRIVATE tavtestsupport ${TAV_TEST_LIBRARIES})
  tav_apply_test_flags(${name})
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60
    PROPERTIES ENVIRONMENT "TAV_TEST_DATA=${TAV_TEST_DATA_DIR}")
endfunction()

# The project's warning and sanitizer flags on one target, once the functions that set them
# are defined.
function(tav_apply_test_flags target)
  if(COMMAND tav_enable_warnings)
    tav_enable_warnings(${target})
  endif()
  if(COMMAND tav_enable_sanitizers)
    tav_enable_sanitizers(${target})
  endif()
endfunction()
