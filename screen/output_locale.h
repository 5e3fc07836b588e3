#pragma once

#include <clocale>
#ifdef __APPLE__
#include <xlocale.h>
#endif

// ncurses interprets bytes beyond ASCII by the current locale, while the program's own tests of bytes must
// not depend on it. So the locale is switched only while something is drawn.
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

// In a UTF-8 locale ncurses does not use REP, which some emulators get wrong in the last columns. It decides
// this when it starts.
inline locale_t unicode_locale() {
  static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", locale_t{});
  return locale != locale_t{} ? locale : users_locale();
}

} // namespace zan
