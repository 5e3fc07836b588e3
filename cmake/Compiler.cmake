# Refuses a compiler or a library that is too old, and says which is not.
include(CheckCXXSourceCompiles)

check_cxx_source_compiles("
#include <algorithm>
#include <array>
#include <compare>
#include <concepts>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>
#if defined(__GNUC__) && !defined(__clang__) && __GNUC__ < 12
#error the compiler
#endif
#if (defined(_GLIBCXX_RELEASE) && _GLIBCXX_RELEASE < 12) || (defined(_LIBCPP_VERSION) && _LIBCPP_VERSION < 16000)
#error the library
#endif
struct Rows {
  std::uint64_t first = 0, last = 0;
  friend auto operator<=>(const Rows&, const Rows&) = default;
};
template <std::integral Number> constexpr bool is_even(Number number) { return number % 2 == 0; }
static_assert(Rows{1, 2} < Rows{1, 3} && is_even(4));
int main() {
  std::vector<Rows> rows{{3, 4}, {1, 2}};
  std::ranges::sort(rows, {}, &Rows::first);
  const std::array<Rows, 1> one{{{.first = 1, .last = 2}}};
  const std::string_view text = \"name.txt\";
  return std::ranges::equal(std::span<const Rows>(rows).first(1), one) && text.ends_with(\".txt\") ? 0 : 1;
}
" ZAN_COMPILER_IS_NEW_ENOUGH)

if(NOT ZAN_COMPILER_IS_NEW_ENOUGH)
  unset(ZAN_COMPILER_IS_NEW_ENOUGH CACHE) # asked again the next time
  message(FATAL_ERROR
    "ZAN is written in C++20. It needs GCC 12, or Clang with libc++ 16 or with GCC 12's library, or later ones. "
    "This is ${CMAKE_CXX_COMPILER_ID} ${CMAKE_CXX_COMPILER_VERSION}, ${CMAKE_CXX_COMPILER}; "
    "-DCMAKE_CXX_COMPILER=... in a new build directory names another.")
endif()
