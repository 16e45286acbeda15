#include "LocaleDate.hpp"

#include <array>
#include <clocale>
#include <ctime>
#include <langinfo.h>
#include <locale.h>
#include <string_view>

namespace brevant::platform {

namespace {

// The user's LC_TIME locale; freed when it goes.
class TimeLocale {
public:
    TimeLocale()
        : locale_(::newlocale(LC_TIME_MASK, "", nullptr)) {
        if (locale_ == nullptr) {
            locale_ = ::newlocale(LC_TIME_MASK, "C", nullptr);
        }
    }

    TimeLocale(const TimeLocale&) = delete;
    TimeLocale& operator=(const TimeLocale&) = delete;
    TimeLocale(TimeLocale&&) = delete;
    TimeLocale& operator=(TimeLocale&&) = delete;

    ~TimeLocale() {
        if (locale_ != nullptr) {
            ::freelocale(locale_);
        }
    }

    [[nodiscard]] locale_t get() const { return locale_; }

private:
    locale_t locale_;
};

// The locale's time format with the seconds taken out. Formats given as a
// shorthand (%r, %T) are spelled out first so their seconds can go too.
std::string timeWithoutSeconds(locale_t locale) {
    std::string format = ::nl_langinfo_l(T_FMT, locale);
    if (format == "%r") {
        format = ::nl_langinfo_l(T_FMT_AMPM, locale);
    }
    if (format.empty() || format == "%T") {
        format = "%H:%M:%S";
    }
    for (std::string_view seconds : {":%S", ".%S", "%S"}) {
        for (auto at = format.find(seconds); at != std::string::npos; at = format.find(seconds)) {
            format.erase(at, seconds.size());
        }
    }
    return format;
}

} // namespace

std::string shortDateTime(std::int64_t unixSeconds) {
    TimeLocale locale;
    auto seconds = static_cast<std::time_t>(unixSeconds);
    std::tm fields{};
    ::tzset();
    if (locale.get() == nullptr || ::localtime_r(&seconds, &fields) == nullptr) {
        return {};
    }
    std::string format = "%x " + timeWithoutSeconds(locale.get());
    std::array<char, 256> text{};
    std::size_t length =
        ::strftime_l(text.data(), text.size(), format.c_str(), &fields, locale.get());
    return {text.data(), length};
}

} // namespace brevant::platform
