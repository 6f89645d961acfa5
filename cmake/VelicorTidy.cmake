# With VELICOR_TIDY, clang-tidy reads every source as it is compiled; .clang-tidy has the checks. A finding is a fault.
if(VELICOR_TIDY)
  string(REGEX MATCH "^[0-9]+" VELICOR_CLANG_VERSION ${CMAKE_CXX_COMPILER_VERSION})
  find_program(VELICOR_CLANG_TIDY NAMES clang-tidy-${VELICOR_CLANG_VERSION} REQUIRED)
  # A unit includes sources.
  set(CMAKE_CXX_CLANG_TIDY ${VELICOR_CLANG_TIDY} --quiet --checks=-bugprone-suspicious-include --warnings-as-errors=*)
endif()
