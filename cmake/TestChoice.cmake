# Whether the tests are built. They need GoogleTest: where it is missing and nobody asked for them,
# everything else is built; when GZD_BUILD_TESTS=ON asks for them, that is an error. What was found is
# not kept, so that a GoogleTest installed later counts.
if(NOT DEFINED GZD_BUILD_TESTS)
  if(PROJECT_IS_TOP_LEVEL)
    find_package(GTest QUIET)
    set(GZD_BUILD_TESTS ${GTest_FOUND})
    if(NOT GTest_FOUND)
      message(STATUS "GoogleTest was not found: building without the tests (Debian: libgtest-dev)")
    endif()
  endif()
elseif(GZD_BUILD_TESTS)
  find_package(GTest QUIET)
  if(NOT GTest_FOUND)
    message(FATAL_ERROR "The tests need GoogleTest, which was not found (Debian: libgtest-dev). "
                        "Install it, or configure with -DGZD_BUILD_TESTS=OFF.")
  endif()
endif()
