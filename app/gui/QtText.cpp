#include "QtText.hpp"

#include <QFile>
#include <QLocale>

namespace brevant::gui {

QString qtText(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

std::string pathBytes(const QString& path) {
    return QFile::encodeName(path).toStdString();
}

QString byteText(std::int64_t bytes) {
    return QLocale().formattedDataSize(bytes, 1, QLocale::DataSizeSIFormat);
}

QString countText(std::int64_t count, const char* one, const char* many) {
    return QStringLiteral("%1 %2").arg(QLocale().toString(static_cast<qlonglong>(count)),
                                       QLatin1String(count == 1 ? one : many));
}

QString spanText(std::int64_t milliseconds) {
    if (milliseconds < 1000) {
        return QStringLiteral("under a second");
    }
    if (milliseconds < 60'000) {
        return countText(milliseconds / 1000, "second", "seconds");
    }
    return durationText(milliseconds);
}

QString durationText(std::int64_t milliseconds) {
    std::int64_t seconds = milliseconds / 1000;
    std::int64_t hours = seconds / 3600;
    std::int64_t minutes = (seconds / 60) % 60;
    seconds %= 60;
    if (hours > 0) {
        return QStringLiteral("%1:%2:%3")
            .arg(hours)
            .arg(minutes, 2, 10, QLatin1Char('0'))
            .arg(seconds, 2, 10, QLatin1Char('0'));
    }
    return QStringLiteral("%1:%2").arg(minutes).arg(seconds, 2, 10, QLatin1Char('0'));
}

} // namespace brevant::gui
