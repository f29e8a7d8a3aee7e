#include "zorvicchooser.h"

#include "mainwindow.h"
#include "sessionmanager.h"
#include "style.h"
#include "text/displaynames.h"
#include "text/librarywords.h"
#include "widgets/placement.h"
#include "widgets/rowmerge.h"

#include <zorvic/discovery.h>

#include <QHeaderView>
#include <QIcon>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QShortcut>
#include <QTimer>

#include <memory>
#include <unordered_map>

namespace {

using Column = ZorvicChooser::ChooserColumn;

constexpr int RefreshPeriodMS = 500;
constexpr int ColumnCount = ZorvicChooser::ColumnTypeToIndex(Column::MAX);
constexpr int AddressIndex = ZorvicChooser::ColumnTypeToIndex(Column::IP);

const std::unordered_map<Column, const char*> FieldNames = {
    {Column::IP, QT_TRANSLATE_NOOP("ZorvicChooser", "IP")},
    {Column::NICKNAME, QT_TRANSLATE_NOOP("ZorvicChooser", "Nickname")},
    {Column::TYPE, QT_TRANSLATE_NOOP("ZorvicChooser", "Type")},
    {Column::GUID, QT_TRANSLATE_NOOP("ZorvicChooser", "GUID")},
    {Column::ROLE, QT_TRANSLATE_NOOP("ZorvicChooser", "Role")},
    {Column::VERSION, QT_TRANSLATE_NOOP("ZorvicChooser", "Version")},
    {Column::API, QT_TRANSLATE_NOOP("ZorvicChooser", "API")},
};

/// Empty for a value that a newer unit may send: the unit is listed with what is known of it.
template <typename Names, typename Value>
QString NameOf(const Names& names, Value value) {
    const auto found = names.find(value);
    return found == names.end() ? QString() : LibraryWord(found->second);
}

QStringList CellTexts(const Zorvic::LANZorvic& unit) {
    const bool unnamed = unit.Nickname == unit.GUID;
    const std::unordered_map<Column, QString> texts = {
        {Column::IP, QString::fromStdString(unit.IP)},
        {Column::NICKNAME, unnamed ? ZorvicChooser::tr("(none)") : QString::fromStdString(unit.Nickname)},
        {Column::TYPE, NameOf(UnitNames, unit.Type)},
        {Column::GUID, QString::fromStdString(unit.GUID)},
        {Column::ROLE, NameOf(RoleNames, unit.CurrentRole)},
        {Column::VERSION, QString::fromStdString(unit.CommunicatorVersion)},
        {Column::API, QString::fromStdString(unit.APIVersion)},
    };
    QStringList cells;
    for (int index = 0; index < ColumnCount; ++index) {
        cells << texts.at(static_cast<Column>(index + 1));
    }
    return cells;
}

QString WhyNoLink(const QString& address, const QString& problem) {
    if (address.isEmpty()) return ZorvicChooser::tr("Type the address of a unit, or choose one from the list.");
    if (problem.isEmpty()) return ZorvicChooser::tr("No unit answers at %1.").arg(address);
    return ZorvicChooser::tr("No link to %1: %2.").arg(address, problem);
}

}  // namespace

ZorvicChooser* ZorvicChooser::Instance = nullptr;

ZorvicChooser::ZorvicChooser(MainWindow* mainWindow) : MainWin(mainWindow) {
    setupUi(this);
    setFont(SizeDefaultFont(10));
    setWindowIcon(QIcon(QStringLiteral(":icons/icon.png")));
    PlaceOverMainWindow(*this);
    SetUpList();
    WireControls();
    auto* timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this, &ZorvicChooser::RefreshLANZorvics);
    timer->start(RefreshPeriodMS);
    RefreshLANZorvics();
    Instance = this;
}

ZorvicChooser::~ZorvicChooser() {
    if (Instance == this) Instance = nullptr;
}

void ZorvicChooser::SetUpList() {
    QStringList headers;
    for (int index = 0; index < ColumnCount; ++index) {
        headers << tr(FieldNames.at(static_cast<Column>(index + 1)));
        ZorvicFinderList->header()->setSectionResizeMode(index, QHeaderView::ResizeToContents);
    }
    ZorvicFinderList->setHeaderLabels(headers);
    // Only the visible rows are measured.
    ZorvicFinderList->header()->setResizeContentsPrecision(0);
}

void ZorvicChooser::WireControls() {
    // It takes Return before the address field sees it, so that one key press connects once; the field's own signal
    // serves the keypad's Enter. A key that is held down must not try again and again.
    auto* connectShortcut = new QShortcut(QKeySequence(Qt::Key_Return), this);
    connectShortcut->setAutoRepeat(false);
    connect(connectShortcut, &QShortcut::activated, this, &ZorvicChooser::OnConnectClicked);
    connect(ZorvicIPBox, &QLineEdit::returnPressed, this, &ZorvicChooser::OnConnectClicked);
    connect(ZorvicIPBox, &QLineEdit::textChanged, ResultLabel, &QLabel::clear);
    connect(ConnectButton, &QPushButton::clicked, this, &ZorvicChooser::OnConnectClicked);
    connect(ZorvicFinderList, &QTreeWidget::itemPressed, this, &ZorvicChooser::OnZorvicSelected);
    connect(ZorvicFinderList, &QTreeWidget::itemDoubleClicked, this, &ZorvicChooser::OnZorvicDoubleClicked);
    connect(ZorvicFinderList, &QTreeWidget::itemSelectionChanged, this, &ZorvicChooser::OnSelectionChanged);
}

void ZorvicChooser::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    ResultLabel->clear();
    ZorvicIPBox->setFocus();
    ZorvicIPBox->selectAll();
    RefreshLANZorvics();
}

void ZorvicChooser::OnZorvicSelected(QTreeWidgetItem* item, int /*column*/) {
    ZorvicIPBox->setText(item->text(AddressIndex));
    // Typing then replaces the address instead of adding to it.
    if (focusWidget() == ZorvicIPBox) ZorvicIPBox->selectAll();
}

void ZorvicChooser::OnZorvicDoubleClicked(QTreeWidgetItem* item) {
    OnZorvicSelected(item, 0);
    OnConnectClicked();
}

/// Serves the arrow keys in the list: what is selected there is what Return connects to.
void ZorvicChooser::OnSelectionChanged() {
    auto* item = SelectedItem();
    if (item && !Refreshing && ZorvicFinderList->hasFocus()) OnZorvicSelected(item, 0);
}

void ZorvicChooser::RefreshLANZorvics() {
    if (!isVisible()) return;
    std::vector<QStringList> rows;
    for (const auto& unit : Zorvic::GetLANZorvics()) {
        rows.push_back(CellTexts(unit));
    }
    const QScopedValueRollback<bool> refreshing(Refreshing, true);
    const int scrolledTo = ZorvicFinderList->verticalScrollBar()->value();
    ShowRows(rows);
    ZorvicFinderList->verticalScrollBar()->setValue(scrolledTo);

    auto* first = ZorvicFinderList->topLevelItem(0);
    if (first && !SelectedItem() && ZorvicIPBox->text().isEmpty()) {
        ZorvicFinderList->setCurrentItem(first);
        OnZorvicSelected(first, 0);
    }
}

/// Rows are told apart by their address.
void ZorvicChooser::ShowRows(const std::vector<QStringList>& rows) {
    QStringList addresses;
    for (const auto& cells : rows)
        addresses << cells[AddressIndex];
    MergeRows(
        *ZorvicFinderList, addresses, [](const QTreeWidgetItem& row) { return row.text(AddressIndex); },
        [&](int place) { return new QTreeWidgetItem(rows[static_cast<std::size_t>(place)]); });
    for (int row = 0; row < ZorvicFinderList->topLevelItemCount(); ++row) {
        for (int index = 0; index < ColumnCount; ++index)
            ZorvicFinderList->topLevelItem(row)->setText(index, rows[static_cast<std::size_t>(row)][index]);
    }
}

QTreeWidgetItem* ZorvicChooser::SelectedItem() const {
    const auto selected = ZorvicFinderList->selectedItems();
    return selected.isEmpty() ? nullptr : selected.first();
}

void ZorvicChooser::OnConnectClicked() {
    // Building the tab runs the event loop, where this can be asked for again.
    if (Connecting) return;
    const QScopedValueRollback<bool> connecting(Connecting, true);
    const QString address = ZorvicIPBox->text().trimmed();
    auto* registry = SessionManager::GetInstance();
    QString problem;
    const std::unique_ptr<SessionHandle> handle(registry->CreateSessionByIP(address.toStdString(), &problem));
    if (!handle) {
        ResultLabel->setText(WhyNoLink(address.toHtmlEscaped(), problem.toHtmlEscaped()));
        return;
    }
    if (!MainWin->AddView(handle->GetSession())) {
        ResultLabel->setText(tr("The unit at %1 does not say who it is.").arg(address.toHtmlEscaped()));
        return;
    }
    hide();
}

void ZorvicChooser::OnNewClicked(bool /*checked*/) {}
