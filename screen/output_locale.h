#pragma once

#include <clocale>
#ifdef __APPLE__
#include <xlocale.h>
#endif

// The screen library asks the C library's locale for characters beyond ASCII, while the program's own tests
// of bytes must not depend on it: so the locale is changed for as long as something is put on the terminal.
namespace zan {

class ScopedLocale {
 public:
  explicit ScopedLocale(locale_t locale) : before_(locale != locale_t{} ? uselocale(locale) : locale_t{}) {}
  ~ScopedLocale() {
    if (before_ != locale_t{}) uselocale(before_);
  }
  ScopedLocale(const ScopedLocale&) = delete;
  ScopedLocale& operator=(const ScopedLocale&) = delete;

 private:
  locale_t before_;
};

inline locale_t users_locale() {
  static const locale_t locale = newlocale(LC_CTYPE_MASK, "", locale_t{});
  return locale;
}

// For the start of the library: it then sends every character itself, instead of asking the terminal to
// repeat one, which not every emulator does right in the last columns.
inline locale_t unicode_locale() {
  static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", locale_t{});
  return locale != locale_t{} ? locale : users_locale();
}

} // namespace zan
