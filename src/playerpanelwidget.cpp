#include "playerpanelwidget.h"

#include "metadata_cache.h"
#include "simulatorpane.h"
#include "text/timetext.h"

#include <zorvic/layout.h>

#include <QCoreApplication>

#include <array>
#include <memory>

PlayerPanelWidget::PlayerPanelWidget(Zorvic::Player player, MetadataCache* cache, Zorvic::CanvasInfo* canvas)
    : OurPlayer(player), Canvas(canvas) {
    setupUi(this);
    const std::unique_ptr<std::array<std::uint32_t, 2>> range(Zorvic::GetPlayerRange(OurPlayer));
    const QString prefix = QCoreApplication::translate("Simulator", Simulator::PLAYERLABELTEXT);
    PlayerLabel->setText(range ? prefix + QString::number(range->front()) : prefix);
    if (cache && ShowAsset(*cache)) return;
    AssetInfoLabel->clear();
    setEnabled(false);
}

bool PlayerPanelWidget::ShowAsset(MetadataCache& cache) {
    if (!Canvas || Canvas->Assets.empty()) return false;
    const std::unique_ptr<Zorvic::AssetMetadata> metadata(cache.LookupAsset(Canvas->Assets.front().FullPath));
    if (!metadata) return false;

    const auto shown = [](const std::string& text) { return QString::fromStdString(text).toHtmlEscaped(); };
    QString text = QStringLiteral("<i>") + shown(metadata->FilePath) + QStringLiteral("</i><br/><br/>");
    const auto add = [&text](const QString& name, const QString& value) {
        text += QStringLiteral("<b>") + name + QStringLiteral(":</b> ") + value;
    };
    const QString lineEnd = QStringLiteral("<br/>");
    add(tr("TRT"), ClockText(metadata->Duration) + lineEnd);
    add(tr("Audio Channels"), QString::number(metadata->AChannels) + lineEnd);
    if (metadata->ASampleRate != 0) add(tr("Audio Sample Rate"), QString::number(metadata->ASampleRate) + lineEnd);
    add(tr("Resolution"), QString::number(metadata->Resolution.Width) + QLatin1Char('x') +
                              QString::number(metadata->Resolution.Height) + lineEnd);
    add(tr("Codec"), shown(metadata->VideoFormat));
    if (metadata->AChannels != 0) text += QStringLiteral("<b>/</b>") + shown(metadata->AudioFormat);
    AssetInfoLabel->setText(text);
    AssetInfoLabel->setToolTip(shown(metadata->FilePath));
    // The window's layout asks for no height that depends on a width, so the panel takes what the narrowest one needs.
    const QMargins margins = InternalLayout->contentsMargins();
    const int narrowest = PlayerPanelInternal->minimumWidth() - margins.left() - margins.right();
    AssetInfoLabel->setMinimumHeight(qMax(AssetInfoLabel->minimumHeight(), AssetInfoLabel->heightForWidth(narrowest)));
    return true;
}
