#include "mainwindow.h"

#include "aboutdialog.h"
#include "comparewindow.h"
#include "sessionmanager.h"
#include "shortcutsheet.h"
#include "text/beyondinterface.h"
#include "widgets/menuletters.h"
#include "widgets/placement.h"
#include "widgets/popupkeys.h"
#include "zorvicchooser.h"
#include "zorvicview.h"

#ifdef ZORVIC_ASRUN
#include "asrun/asrunmenu.h"
#endif

#include <QCloseEvent>
#include <QIcon>
#include <QShortcut>

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <utility>
#include <vector>

namespace {

bool IsRegistered(const std::string& guid, const Zorvic::Session* session) {
    const auto handle = FindSession(guid);
    return handle && handle->GetSession() == session;
}

/// Registers for every kind of event; a null callback unregisters, and then none is running when this returns.
void SetCallbacks(Zorvic::Session& session, Zorvic::StateEventCallback callback, ZorvicView* view) {
    for (int type = Zorvic::ZORVIC_STATE_PRESETS; type <= Zorvic::ZORVIC_STATE_TIMECODE; ++type) {
        session.SetStateEventCallback(static_cast<Zorvic::StateEventType>(type), callback, view);
    }
}

QString TabLabel(const std::string& host, const std::string& guid, const std::string& name) {
    QString label = QString::fromStdString(name == guid ? host : host + ":" + name);
    // A single ampersand would make the next letter a shortcut.
    return label.replace(QLatin1Char('&'), QLatin1String("&&"));
}

}  // namespace

MainWindow::MainWindow() {
    setupUi(this);
    setWindowIcon(QIcon(QStringLiteral(":icons/icon.png")));
    PlaceOverMainWindow(*this);
    WireMenus();
    SetUpAsRun();
    WireKeys();
    // Return opens the menu that Alt or F10 chose; it must not start what is selected in the tab.
    KeepKeys(*menuBar());
    connect(ZorvicTabs, &QTabWidget::tabCloseRequested, this, &MainWindow::OnTabCloseClick);
    connect(ZorvicTabs, &QTabWidget::currentChanged, this, &MainWindow::OnTabsChanged);
    OnTabsChanged();
}

MainWindow::~MainWindow() {
    while (!Views.empty()) {
        RemoveView(std::string(Views.begin()->first));
    }
}

void MainWindow::WireMenus() {
    connect(NewMenuItem, &QAction::triggered, this, &MainWindow::OnConnectMenuClicked);
    connect(actionQuit, &QAction::triggered, this, &MainWindow::OnQuitClicked);
    connect(KeysMenuItem, &QAction::triggered, this, &MainWindow::OnKeysClicked);
    connect(AboutMenuItem, &QAction::triggered, this, &MainWindow::OnAboutClicked);
    connect(CompareMenuItem, &QAction::triggered, this, &MainWindow::OnCompareClicked);
    connect(CreatePresetMenuItem, &QAction::triggered, this, &MainWindow::OnCreatePresetClicked);
    connect(EditPresetMenuItem, &QAction::triggered, this, &MainWindow::OnEditPresetClicked);
    connect(ClonePresetMenuItem, &QAction::triggered, this, &MainWindow::OnClonePresetClicked);
    connect(DeletePresetMenuItem, &QAction::triggered, this, &MainWindow::OnDeletePresetClicked);

    const std::pair<QAction*, PowerMethod> powerItems[] = {{SoftRebootMenuItem, &Zorvic::Session::SoftRebootZorvic},
                                                           {RebootMenuItem, &Zorvic::Session::RebootZorvic},
                                                           {ShutdownMenuItem, &Zorvic::Session::ShutdownZorvic}};
    for (const auto& [item, method] : powerItems) {
        connect(item, &QAction::triggered, this, [this, method = method] { CallPowerMethod(method); });
    }
}

void MainWindow::WireKeys() {
    MenuLetters::GiveTo(*menuBar());
    const auto add = [this](const QKeySequence& key, auto act) {
        auto* const shortcut = new QShortcut(key, this);
        shortcut->setAutoRepeat(false);
        connect(shortcut, &QShortcut::activated, this, act);
    };
    add(QKeySequence(QStringLiteral("Ctrl+PgDown")), [this] { StepUnit(1); });
    add(QKeySequence(QStringLiteral("Ctrl+PgUp")), [this] { StepUnit(-1); });
    add(QKeySequence(QStringLiteral("Ctrl+W")), [this] { OnTabCloseClick(ZorvicTabs->currentIndex()); });
}

/// The keyboard goes along: what had it stands in another tab.
void MainWindow::StepUnit(int step) {
    const int count = ZorvicTabs->count();
    if (count < 2) return;
    ZorvicTabs->setCurrentIndex((ZorvicTabs->currentIndex() + step + count) % count);
    if (auto* const view = qobject_cast<ZorvicView*>(ZorvicTabs->currentWidget())) view->PresetsView->setFocus();
}

void MainWindow::SetUpAsRun() {
#ifdef ZORVIC_ASRUN
    AddAsRunAction(*ToolsMenu, [this]() -> std::optional<AsRunUnit> {
        const auto* view = CurrentView();
        if (!view) return std::nullopt;
        const SessionHandle handle = view->GetSessionHandle();
        QString label = ZorvicTabs->tabText(ZorvicTabs->currentIndex());
        return AsRunUnit{handle.GetSession()->GetHost(), label.replace(QLatin1String("&&"), QLatin1String("&"))};
    });
#endif
}

ZorvicView* MainWindow::AddView(Zorvic::Session* session) {
    std::string guid;
    std::string name;
    if (session->GetUnitID(guid, name) != Zorvic::ZORVIC_STATUS_OK) {
        ReattachView(session);
        return nullptr;
    }
    const std::string host = session->GetHost();
    RemoveView(guid);
    auto view = BuildView(guid, session);
    if (!view) return nullptr;

    SetCallbacks(*session, &ZorvicView::OnStateEvent, view.get());
    auto& entry = Views[guid];
    entry = std::move(view);
    const QString label = TabLabel(host, guid, name);
    ZorvicTabs->setCurrentIndex(ZorvicTabs->addTab(entry.get(), label));
    connect(entry.get(), &ZorvicView::LinkChanged, this, [this, shown = entry.get(), label](bool lost) {
        ZorvicTabs->setTabText(ZorvicTabs->indexOf(shown), lost ? tr("%1 (no answer)").arg(label) : label);
    });
    // Left on the tab bar, the arrow keys would switch between units.
    entry->PresetsView->setFocus();
    return entry.get();
}

/// Null when the session was closed or replaced while the event loop ran in here: the pointer dangles then.
std::unique_ptr<ZorvicView> MainWindow::BuildView(const std::string& guid, Zorvic::Session* session) const {
    auto view = std::make_unique<ZorvicView>(guid, session->GetHost());
    if (!IsRegistered(guid, session)) return nullptr;
    std::vector<Zorvic::Asset> assets;
    session->GetAssets(assets);
    view->AcceptAssets(assets);
    view->AcceptPresetStates();
    if (!IsRegistered(guid, session)) return nullptr;
    return view;
}

void MainWindow::RemoveView(const std::string& guid) {
    const auto found = Views.find(guid);
    if (found == Views.end()) return;
    // A session that was replaced took its callbacks along; its successor has none of this view's yet.
    if (const auto handle = FindSession(guid)) SetCallbacks(*handle->GetSession(), nullptr, nullptr);
    const auto view = std::move(found->second);
    Views.erase(found);
}

/// A new session took the place of the one that reported to an open tab, but it gets no tab of its own: from now on it
/// reports to that tab, which would otherwise show its last state for ever.
void MainWindow::ReattachView(Zorvic::Session* session) const {
    for (const auto& [guid, view] : Views) {
        if (IsRegistered(guid, session)) SetCallbacks(*session, &ZorvicView::OnStateEvent, view.get());
    }
}

/// Whatever else is open, a builder or the chooser, would keep a program running that has nothing to show.
void MainWindow::closeEvent(QCloseEvent* event) {
    QMainWindow::closeEvent(event);
    QCoreApplication::quit();
}

void MainWindow::OnTabCloseClick(int index) {
    const auto* view = qobject_cast<ZorvicView*>(ZorvicTabs->widget(index));
    if (!view) return;
    const std::string guid = view->GetGUID();
    ZorvicTabs->removeTab(index);
    RemoveView(guid);
}

ZorvicView* MainWindow::CurrentView() const {
    auto* view = qobject_cast<ZorvicView*>(ZorvicTabs->currentWidget());
    return view && FindSession(view->GetGUID()) ? view : nullptr;
}

void MainWindow::OnCreatePresetClicked() {
    if (auto* view = CurrentView()) view->ToggleCreatePreset();
}

void MainWindow::OnEditPresetClicked() {
    if (auto* view = CurrentView()) view->EditSelectedPreset();
}

void MainWindow::OnClonePresetClicked() {
    if (auto* view = CurrentView()) view->CloneSelectedPresets();
}

void MainWindow::OnDeletePresetClicked() {
    if (auto* view = CurrentView()) view->DeleteSelectedPresets();
}

void MainWindow::CallPowerMethod(PowerMethod method) {
    const auto* view = CurrentView();
    if (!view) return;
    const SessionHandle handle = view->GetSessionHandle();
    const auto* const item = method == &Zorvic::Session::ShutdownZorvic ? ShutdownMenuItem
                             : method == &Zorvic::Session::RebootZorvic ? RebootMenuItem
                                                                        : SoftRebootMenuItem;
    const auto status = (handle.GetSession()->*method)();
    view->Report(item->text(), handle.GetSession(), status);
}

void MainWindow::OnTabsChanged() {
    const bool hasTabs = ZorvicTabs->count() > 0;
    ZorvicTabs->setVisible(hasTabs);
    NoUnitsLabel->setVisible(!hasTabs);
    for (auto* menu : {PresetMenu, ToolsMenu}) {
        for (auto* action : menu->actions()) {
            action->setEnabled(hasTabs);
        }
    }
}

void MainWindow::OnKeysClicked() {
    auto* sheet = new ShortcutSheet;  // deletes itself
    sheet->show();
}

/// Of the library and of each connected unit, as far as they tell.
QStringList MainWindow::Versions() const {
    QStringList lines;
    if (const QString library = LibraryVersionText(); !library.isEmpty())
        lines += tr("Library: version %1").arg(library);
    for (int index = 0; index < ZorvicTabs->count(); ++index) {
        const auto* const view = qobject_cast<ZorvicView*>(ZorvicTabs->widget(index));
        const auto handle = view ? FindSession(view->GetGUID()) : nullptr;
        if (!handle) continue;
        const QString version = UnitVersionText(*handle->GetSession());
        lines += tr("Unit %1: %2")
                     .arg(QString::fromStdString(handle->GetSession()->GetHost()),
                          version.isEmpty() ? tr("does not tell its version") : version);
    }
    return lines;
}

void MainWindow::OnAboutClicked() {
    auto* dialog = new AboutDialog;  // deletes itself
    dialog->ShowVersions(Versions());
    dialog->show();
}

void MainWindow::OnCompareClicked() {
    std::vector<CompareWindow::Unit> units;
    for (int index = 0; index < ZorvicTabs->count(); ++index) {
        const auto* view = qobject_cast<ZorvicView*>(ZorvicTabs->widget(index));
        if (view)
            units.push_back(
                {view->GetGUID(), ZorvicTabs->tabText(index).replace(QLatin1String("&&"), QLatin1String("&"))});
    }
    auto* window = new CompareWindow(std::move(units));  // deletes itself
    window->show();
}

void MainWindow::OnConnectMenuClicked() {
    auto* chooser = ZorvicChooser::Instance;
    if (!chooser) return;
    chooser->show();
    chooser->raise();
    chooser->activateWindow();
}

void MainWindow::OnQuitClicked() {
    // At once, without closing windows: units must not notice, and nothing here is worth saving.
    std::cout.flush();
    std::cerr.flush();
    std::clog.flush();
    std::fflush(nullptr);
    std::_Exit(0);
}
