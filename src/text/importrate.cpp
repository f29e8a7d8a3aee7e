#include "text/importrate.h"

#include "text/assettext.h"
#include "text/timetext.h"

#include <QCoreApplication>

#include <algorithm>

namespace {

constexpr std::int64_t WindowMS = 5000;
/// Less than this tells more of the unit's rhythm than of its speed.
constexpr std::int64_t ShortestMS = 500;

}  // namespace

void ImportRate::Note(std::int64_t bytes, std::int64_t atMS) {
    // Fewer bytes than before: another import.
    if (!Samples.empty() && bytes < Samples.back().second) Samples.clear();
    Samples.emplace_back(atMS, bytes);
    while (Samples.size() > 2 && atMS - Samples[1].first >= WindowMS)
        Samples.pop_front();
}

std::int64_t ImportRate::BytesPerSecond() const {
    if (Samples.empty()) return 0;
    const std::int64_t passed = Samples.back().first - Samples.front().first;
    return passed < ShortestMS ? 0 : (Samples.back().second - Samples.front().second) * 1000 / passed;
}

QString ImportText(const ImportSums& sums, std::int64_t bytesPerSecond) {
    const auto say = [](const char* text) { return QCoreApplication::translate("AssetBrowser", text); };
    const QString done = say(QT_TRANSLATE_NOOP("AssetBrowser", "%1 of %2 files, %3 of %4"))
                             .arg(sums.FilesDone)
                             .arg(sums.Files)
                             .arg(SizeText(sums.Current), SizeText(sums.Total));
    if (bytesPerSecond <= 0) return done;
    constexpr std::int64_t DayMS = 24LL * 60 * 60 * 1000;
    const auto leftMS = std::min((sums.Total - sums.Current) / bytesPerSecond * 1000, DayMS - 1);
    return say(QT_TRANSLATE_NOOP("AssetBrowser", "%1, %2/s, %3 left"))
        .arg(done, SizeText(bytesPerSecond), ClockText(static_cast<int>(leftMS)));
}
