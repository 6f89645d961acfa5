# The toolchain of the presets that need clang: the clang of packaging/debian-packages that this Debian release has.
find_program(VELICOR_CLANG NAMES clang++-19 clang++-21 clang++-16 REQUIRED)
set(CMAKE_CXX_COMPILER ${VELICOR_CLANG})
