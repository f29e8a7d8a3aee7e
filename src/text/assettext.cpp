#include "text/assettext.h"

#include <QCoreApplication>
#include <QStringBuilder>

#include <string>
#include <unordered_map>

namespace {

const std::unordered_map<Zorvic::AssetState, std::string> AssetStateNames = {
    {Zorvic::ZORVIC_ASSETSTATE_READY, QT_TRANSLATE_NOOP("ZorvicView", "Ready")},
    {Zorvic::ZORVIC_ASSETSTATE_INGESTING, QT_TRANSLATE_NOOP("ZorvicView", "Ingesting")},
    {Zorvic::ZORVIC_ASSETSTATE_ERROR, QT_TRANSLATE_NOOP("ZorvicView", "ERROR")},
    {Zorvic::ZORVIC_ASSETSTATE_PROCESSING, QT_TRANSLATE_NOOP("ZorvicView", "Processing")},
};

constexpr const char* Separators = "/\\";

}  // namespace

std::string StripPathFromFilename(const std::string& path) {
    const auto separator = path.find_last_of(Separators);
    return separator == std::string::npos ? path : path.substr(separator + 1);
}

std::string StripFilenameFromPath(const std::string& path) {
    const auto separator = path.find_last_of(Separators);
    return separator == std::string::npos ? std::string() : path.substr(0, separator);
}

QString SizeText(std::int64_t bytes) {
    constexpr std::int64_t MiB = 1LL << 20;
    constexpr std::int64_t GiB = 1LL << 30;
    const bool isBig = bytes >= GiB;
    const double count = static_cast<double>(bytes) / static_cast<double>(isBig ? GiB : MiB);
    return QString::number(count, 'f', 2) % (isBig ? QStringLiteral("GiB") : QStringLiteral("MiB"));
}

QString DimensionsText(const Zorvic::AssetMetadata& metadata) {
    return QString::number(metadata.Resolution.Width) % QLatin1Char('x') % QString::number(metadata.Resolution.Height) %
           QLatin1Char('@') % QString::number(metadata.FPS);
}

QString CodecText(const Zorvic::AssetMetadata& metadata) {
    const QString video = QString::fromStdString(metadata.VideoFormat);
    return metadata.AudioFormat.empty() ? video
                                        : video % QLatin1Char('/') % QString::fromStdString(metadata.AudioFormat);
}

QString StatusText(Zorvic::AssetState state) {
    const auto name = AssetStateNames.find(state);
    return name == AssetStateNames.end() ? QString() : QCoreApplication::translate("ZorvicView", name->second.c_str());
}
