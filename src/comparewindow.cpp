#include "comparewindow.h"

#include "sessionmanager.h"
#include "text/librarywords.h"
#include "widgets/placement.h"

#include <QApplication>
#include <QHeaderView>
#include <QIcon>
#include <QPointer>
#include <QShortcut>
#include <QThreadPool>
#include <QTreeWidgetItem>

#include <utility>

CompareWindow::CompareWindow(std::vector<Unit> units) : Units(std::move(units)) {
    setupUi(this);
    setAttribute(Qt::WA_DeleteOnClose);
    connect(new QShortcut(Qt::Key_Escape, this), &QShortcut::activated, this, &QWidget::close);
    PlaceOverMainWindow(*this);
    setWindowIcon(QIcon(QStringLiteral(":icons/icon.png")));
    Differences->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    Differences->header()->setResizeContentsPrecision(0);
    for (const Unit& unit : Units) {
        FirstUnit->addItem(unit.Name);
        SecondUnit->addItem(unit.Name);
    }
    SecondUnit->setCurrentIndex(Units.size() > 1 ? 1 : 0);
    connect(CompareButton, &QPushButton::clicked, this, &CompareWindow::OnCompareClicked);
    OnCompareClicked();
}

std::optional<CompareWindow::Contents> CompareWindow::Read(const std::string& guid) {
    const auto handle = FindSession(guid);
    Contents contents;
    if (!handle || handle->GetSession()->GetPresets(contents.Presets) != Zorvic::ZORVIC_STATUS_OK ||
        handle->GetSession()->GetAssets(contents.Assets) != Zorvic::ZORVIC_STATUS_OK)
        return std::nullopt;
    return contents;
}

void CompareWindow::OnCompareClicked() {
    Differences->clear();
    const auto first = static_cast<std::size_t>(FirstUnit->currentIndex());
    const auto second = static_cast<std::size_t>(SecondUnit->currentIndex());
    if (Units.size() < 2 || first == second) return SummaryLabel->setText(tr("Choose two units that are connected."));
    const auto one = Read(Units.at(first).GUID);
    const auto other = Read(Units.at(second).GUID);
    if (!one || !other)
        return SummaryLabel->setText(tr("%1 does not answer.").arg(Units.at(one ? second : first).Name));
    CompareButton->setEnabled(false);
    SummaryLabel->setText(tr("Comparing…"));
    // Thousands of presets take longer than a live panel may stand still.
    QThreadPool::globalInstance()->start([one = *one, other = *other, window = QPointer(this)] {
        Found found{Zorvic::ComparePresets(one.Presets, other.Presets), Zorvic::CompareMedia(one.Assets, other.Assets)};
        const auto show = [window, found = std::move(found)] {
            if (window) window->Show(found);
        };
        QMetaObject::invokeMethod(qApp, show, Qt::QueuedConnection);
    });
}

void CompareWindow::Show(const Found& found) {
    QList<QTreeWidgetItem*> rows;
    for (const auto& difference : found.Presets)
        AddPreset(rows, difference);
    for (const auto& media : found.Media)
        rows << new QTreeWidgetItem({QString::fromStdString(media.Path), WhereText(media.InFirst, media.InSecond)});
    Differences->addTopLevelItems(rows);
    CompareButton->setEnabled(true);
    SummaryLabel->setText(rows.isEmpty() ? tr("No differences.")
                                         : tr("%n difference(s).", nullptr, static_cast<int>(rows.size())));
}

void CompareWindow::AddPreset(QList<QTreeWidgetItem*>& rows, const Zorvic::PresetDifference& difference) {
    const QString name = QString::fromStdString(difference.Name);
    const bool inBoth = difference.FirstPK != 0 && difference.SecondPK != 0;
    if (!inBoth) rows << new QTreeWidgetItem({name, WhereText(difference.FirstPK != 0, difference.SecondPK != 0)});
    for (const auto& field : difference.Fields)
        rows << new QTreeWidgetItem({name, LibraryWord(field.Field), QString::fromStdString(field.First),
                                     QString::fromStdString(field.Second)});
}

QString CompareWindow::WhereText(bool inFirst, bool inSecond) {
    if (inFirst && inSecond) return tr("other content");
    return inFirst ? tr("only in the first") : tr("only in the second");
}
