# What makes faults in memory harder to exploit, as dpkg-buildflags has it: the stack's ends and frames are guarded,
# calls of the C library are checked against the sizes that the compiler knows, indirect jumps and returns end where
# the CPU was told to expect them, and relocations are read-only before main() begins. packaging/check looks for it.
include(CheckCXXCompilerFlag)

foreach(option -fstack-protector-strong -fstack-clash-protection -fcf-protection -mbranch-protection=standard)
  string(MAKE_C_IDENTIFIER "VELICOR_HAS${option}" known)
  check_cxx_compiler_flag(${option} ${known})  # some are of one CPU only
  if(${known})
    target_compile_options(velicor_flags INTERFACE ${option})
  endif()
endforeach()
# Without optimization the C library only warns. Whoever packages Velicor may ask for another level.
if(NOT CMAKE_CXX_FLAGS MATCHES "_FORTIFY_SOURCE")
  target_compile_definitions(velicor_flags INTERFACE $<$<CONFIG:Release,RelWithDebInfo>:_FORTIFY_SOURCE=2>)
endif()
target_link_options(velicor_flags INTERFACE -Wl,-z,relro,-z,now)
