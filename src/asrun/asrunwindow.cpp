#include "asrun/asrunwindow.h"

#include "asrun/asrunfilter.h"
#include "asrun/asrunmodel.h"
#include "widgets/placement.h"

#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QFileDialog>
#include <QLocale>
#include <QPointer>
#include <QSaveFile>
#include <QScrollBar>
#include <QShortcut>

#include <algorithm>
#include <chrono>
#include <utility>

namespace {

constexpr std::chrono::milliseconds RefreshPeriod(200);

/// A cell as a spreadsheet takes it from the clipboard.
QString PlainCell(QString cell) {
    cell.replace(QLatin1Char('\t'), QLatin1Char(' '));
    const bool isFormula = !cell.isEmpty() && QStringLiteral("=+-@").contains(cell.at(0));
    return isFormula ? QLatin1Char('\'') + cell : cell;
}

}  // namespace

AsRunWindow::AsRunWindow(const std::string& host, const QString& unit)
    : Sheet(std::make_unique<Zorvic::AsRunSheet>(host, Zorvic::AsRunSheet::Range{.Since = {}, .Limit = History})),
      Model(new AsRunModel),
      Shown(new AsRunFilter(this)),
      Unit(unit) {
    setupUi(this);
    setAttribute(Qt::WA_DeleteOnClose);
    connect(new QShortcut(Qt::Key_Escape, this), &QShortcut::activated, this, &QWidget::close);
    setWindowTitle(tr("As-run sheet - %1").arg(unit));
    PlaceOverMainWindow(*this);
    Model->setParent(this);
    SetUpTable();
    WireControls();
    Refresh();
}

AsRunWindow::~AsRunWindow() = default;

void AsRunWindow::SetUpTable() {
    Shown->setSourceModel(Model);
    EntriesView->setModel(Shown);
    // Rows of one height, so that thousands of them cost no measuring.
    EntriesView->verticalHeader()->hide();
    EntriesView->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    EntriesView->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 8);
    const std::pair<AsRunModel::Column, const char*> widths[] = {
        {AsRunModel::TIME, "2026-01-01 00:00:00.000"},    {AsRunModel::WHAT, "Unit started"},
        {AsRunModel::PRESET, "1000  A preset's name"},    {AsRunModel::POSITION, "00:00:00.000"},
        {AsRunModel::ASKED_BY, "zorvic-control on host"}, {AsRunModel::SHOWN, "1 after 100 ms, 1 dropped"}};
    for (const auto& [column, sample] : widths)
        EntriesView->setColumnWidth(column, fontMetrics().horizontalAdvance(QString::fromLatin1(sample)) + 16);
    EntriesView->horizontalHeader()->setStretchLastSection(true);
}

void AsRunWindow::WireControls() {
    connect(FilterEdit, &QLineEdit::textChanged, this, &AsRunWindow::OnFilterChanged);
    connect(CopyButton, &QPushButton::clicked, this, &AsRunWindow::OnCopyClicked);
    connect(SaveButton, &QPushButton::clicked, this, &AsRunWindow::OnSaveClicked);
    auto* copy = new QShortcut(QKeySequence::Copy, EntriesView);
    copy->setContext(Qt::WidgetShortcut);
    connect(copy, &QShortcut::activated, this, &AsRunWindow::OnCopyClicked);
    connect(new QShortcut(QKeySequence::Find, this), &QShortcut::activated, FilterEdit,
            [this] { FilterEdit->setFocus(Qt::ShortcutFocusReason); });
    connect(EntriesView->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this] { CopyButton->setEnabled(EntriesView->selectionModel()->hasSelection()); });
    connect(&Round, &QTimer::timeout, this, &AsRunWindow::Refresh);
    Round.start(RefreshPeriod);
}

void AsRunWindow::Refresh() {
    TakeNews();
    ShowState();
}

void AsRunWindow::TakeNews() {
    auto news = Sheet->Take();
    if (news.Anew) Model->Clear();
    if (news.Entries.empty()) return;
    const QScrollBar* bar = EntriesView->verticalScrollBar();
    const bool follows = bar->value() == bar->maximum();
    Model->Add(std::move(news.Entries), follows);
    if (follows) EntriesView->scrollToBottom();
}

void AsRunWindow::ShowState() {
    using State = Zorvic::AsRunSheet::State;
    const QLocale locale;
    const QString count =
        Shown->rowCount() == Model->rowCount()
            ? tr("%1 entries").arg(locale.toString(Model->rowCount()))
            : tr("%1 of %2 entries").arg(locale.toString(Shown->rowCount()), locale.toString(Model->rowCount()));
    const State state = Sheet->Now();
    QString text;
    if (state == State::Missing) text = QString::fromStdString(Sheet->Problem());
    if (state == State::Connecting) text = tr("No answer from the unit, trying again");
    if (state == State::Reading) text = tr("Reading older entries");
    if (state == State::Live) text = tr("Live");
    text = tr("%1 - %2").arg(text, count);
    StateLabel->setText(LastSave.isEmpty() ? text : tr("%1 - %2").arg(text, LastSave));
}

void AsRunWindow::OnFilterChanged(const QString& text) {
    LastSave.clear();
    Shown->SetText(text);
    EntriesView->scrollToBottom();
    ShowState();
}

void AsRunWindow::OnCopyClicked() {
    auto rows = EntriesView->selectionModel()->selectedRows();
    if (rows.isEmpty()) return;
    std::sort(rows.begin(), rows.end());
    QString text;
    for (const QModelIndex& row : std::as_const(rows)) {
        for (int column = 0; column < AsRunModel::COLUMN_COUNT; ++column)
            text += (column > 0 ? QStringLiteral("\t") : QString()) +
                    PlainCell(row.sibling(row.row(), column).data().toString());
        text += QLatin1Char('\n');
    }
    QApplication::clipboard()->setText(text);
}

// The dialog runs the event loop, in which the window may be closed. It does not begin in the program's own directory,
// which holds nothing else.
void AsRunWindow::OnSaveClicked() {
    const QPointer<AsRunWindow> self(this);
    const QString file =
        QFileDialog::getSaveFileName(this, tr("Save as CSV"), QDir::home().filePath(QStringLiteral("as-run.csv")),
                                     tr("CSV files (*.csv);;All files (*)"));
    if (self && !file.isEmpty()) SaveTo(file);
}

bool AsRunWindow::SaveTo(const QString& file) {
    QSaveFile out(file);
    bool saved = out.open(QIODevice::WriteOnly);
    const auto write = [&](const std::string& line) { saved = saved && out.write((line + "\r\n").c_str()) >= 0; };
    write(Zorvic::AsRunCSVHeader());
    for (int row = 0; saved && row < Shown->rowCount(); ++row)
        write(Zorvic::AsRunCSV(Model->EntryAt(Shown->mapToSource(Shown->index(row, 0)).row())));
    saved = saved && out.commit();
    LastSave = saved ? tr("%1 entries saved as %2").arg(Shown->rowCount()).arg(file)
                     : tr("Not saved as %1: %2").arg(file, out.errorString());
    ShowState();
    return saved;
}
