# The library assumes the x87 80-bit long double (values, the 10-byte stream format, the exact digit
# generator) and 128-bit integers (digit generation, 64x64-bit products). There is no fallback:
# stop at configure time instead of building something that computes differently.
include(CheckCXXSourceCompiles)
check_cxx_source_compiles([=[
#include <limits>
static_assert(std::numeric_limits<long double>::digits == 64, "");
static_assert(std::numeric_limits<long double>::max_exponent == 16384, "");
int main() { return 0; }
]=] QXNUM_HAVE_X87_LONG_DOUBLE)
check_cxx_source_compiles([=[
int main(int argc, char**) {
  unsigned __int128 P = static_cast<unsigned __int128>(static_cast<unsigned long long>(argc) << 40) * 0xFFFFFFFFFFFFFFFFull;
  return static_cast<int>(P >> 100);
}
]=] QXNUM_HAVE_INT128)
set(missing "")
if(NOT QXNUM_HAVE_X87_LONG_DOUBLE)
  string(APPEND missing "\n- a long double in the 80-bit extended format (64-bit significand), as GCC "
    "and Clang give on x86 and x86-64;")
endif()
if(NOT QXNUM_HAVE_INT128)
  string(APPEND missing "\n- 128-bit integers (unsigned __int128), as GCC and Clang give on 64-bit targets;")
endif()
if(missing)
  message(FATAL_ERROR "QXNumCtrls needs a C++ compiler with${missing}\n"
    "${CMAKE_CXX_COMPILER_ID} ${CMAKE_CXX_COMPILER_VERSION} for ${CMAKE_SYSTEM_PROCESSOR} lacks them "
    "(details in CMakeFiles/CMakeError.log).")
endif()
unset(missing)
