#include "shortcutsheet.h"

#include "widgets/placement.h"

#include <QCoreApplication>
#include <QIcon>
#include <QScrollBar>
#include <QShortcut>

#include <algorithm>
#include <vector>

namespace {

struct Line {
    const char* Keys;
    const char* Effect;
};

struct Group {
    const char* Title;
    std::vector<Line> Lines;
};

std::vector<Group> Groups() {
    return {
        {QT_TRANSLATE_NOOP("ShortcutSheet", "Everywhere"),
         {{"F1", QT_TRANSLATE_NOOP("ShortcutSheet", "Show this sheet")},
          {"Alt", QT_TRANSLATE_NOOP("ShortcutSheet", "Show the letters of the menus; with a letter: open that menu")},
          {"Tab, Shift+Tab", QT_TRANSLATE_NOOP("ShortcutSheet", "Next or previous control")},
          {"F6, Shift+F6",
           QT_TRANSLATE_NOOP("ShortcutSheet",
                             "Next or previous part: presets, time, scrub bar, lists, picture, volume")},
          {QT_TRANSLATE_NOOP("ShortcutSheet", "Space"),
           QT_TRANSLATE_NOOP("ShortcutSheet", "Press the button, change the tick")},
          {QT_TRANSLATE_NOOP("ShortcutSheet", "Menu, Shift+F10"),
           QT_TRANSLATE_NOOP("ShortcutSheet", "Open the menu of what has the keyboard")},
          {"Ctrl+PgDown, Ctrl+PgUp", QT_TRANSLATE_NOOP("ShortcutSheet", "Next or previous unit")},
          {"Ctrl+W", QT_TRANSLATE_NOOP("ShortcutSheet", "Close the unit's tab; the unit plays on")}}},
        {QT_TRANSLATE_NOOP("ShortcutSheet", "Running a show"),
         {{QT_TRANSLATE_NOOP("ShortcutSheet", "Return, Enter"),
           QT_TRANSLATE_NOOP("ShortcutSheet", "Take the selected presets; pause or resume those that play")},
          {QT_TRANSLATE_NOOP("ShortcutSheet", "Escape"),
           QT_TRANSLATE_NOOP("ShortcutSheet", "End the selected presets; in the time field: take back what was typed")},
          {QT_TRANSLATE_NOOP("ShortcutSheet", "Return in the time field"),
           QT_TRANSLATE_NOOP("ShortcutSheet", "Jump to the typed time before the out point")},
          {QT_TRANSLATE_NOOP("ShortcutSheet", "Left, Right on the scrub bar"),
           QT_TRANSLATE_NOOP("ShortcutSheet", "Step by 50 ms")},
          {"Alt+1", QT_TRANSLATE_NOOP("ShortcutSheet", "Press \"Goto 10\"")},
          {"Alt+3", QT_TRANSLATE_NOOP("ShortcutSheet", "Press \"Goto 30\"")},
          {"Alt+I, Alt+O", QT_TRANSLATE_NOOP("ShortcutSheet", "Set the in point, set the out point")},
          {"Alt+R", QT_TRANSLATE_NOOP("ShortcutSheet", "Reset the trim")}}},
        {QT_TRANSLATE_NOOP("ShortcutSheet", "Presets"),
         {{QT_TRANSLATE_NOOP("ShortcutSheet", "Up, Down"),
           QT_TRANSLATE_NOOP("ShortcutSheet", "Select another preset; with Shift: several")},
          {QT_TRANSLATE_NOOP("ShortcutSheet", "Letters"), QT_TRANSLATE_NOOP("ShortcutSheet", "Look a name up")},
          {QT_TRANSLATE_NOOP("ShortcutSheet", "Alt+Up, Alt+Down"),
           QT_TRANSLATE_NOOP("ShortcutSheet", "Move the selected presets in the list")},
          {"Alt+N, Alt+E, Alt+C", QT_TRANSLATE_NOOP("ShortcutSheet", "New preset, edit, clone")},
          {"Alt+L", QT_TRANSLATE_NOOP("ShortcutSheet", "Show or hide the layout")}}},
        {QT_TRANSLATE_NOOP("ShortcutSheet", "Gotos and countdowns"),
         {{QT_TRANSLATE_NOOP("ShortcutSheet", "Ctrl+Return"),
           QT_TRANSLATE_NOOP("ShortcutSheet", "Jump to the goto of the current row")},
          {"F2", QT_TRANSLATE_NOOP("ShortcutSheet", "Rename the current row")}}},
        {QT_TRANSLATE_NOOP("ShortcutSheet", "Preset builder and asset browser"),
         {{QT_TRANSLATE_NOOP("ShortcutSheet", "Return"),
           QT_TRANSLATE_NOOP("ShortcutSheet", "Save the preset; take the selected files")},
          {QT_TRANSLATE_NOOP("ShortcutSheet", "Space on a canvas"),
           QT_TRANSLATE_NOOP("ShortcutSheet", "Choose its asset, or remove it")},
          {QT_TRANSLATE_NOOP("ShortcutSheet", "Right, Backspace"),
           QT_TRANSLATE_NOOP("ShortcutSheet", "In the list of files: open the folder, go to the one above")},
          {"Ctrl+C", QT_TRANSLATE_NOOP("ShortcutSheet", "Copy the selected entries of the as-run sheet")},
          {"Ctrl+F", QT_TRANSLATE_NOOP("ShortcutSheet", "Filter the files, or the as-run sheet")},
          {QT_TRANSLATE_NOOP("ShortcutSheet", "Escape"), QT_TRANSLATE_NOOP("ShortcutSheet", "Close the window")}}},
    };
}

}  // namespace

ShortcutSheet::ShortcutSheet() {
    setupUi(this);
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowIcon(QIcon(QStringLiteral(":icons/icon.png")));
    AddGroups();
    KeysView->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    FitTexts();
    PlaceOverMainWindow(*this);
    connect(CloseButton, &QPushButton::clicked, this, &QWidget::close);
    connect(new QShortcut(Qt::Key_Escape, this), &QShortcut::activated, this, &QWidget::close);
}

void ShortcutSheet::AddGroups() {
    const auto say = [](const char* text) { return QCoreApplication::translate("ShortcutSheet", text); };
    for (const auto& group : Groups()) {
        auto* const title = new QTreeWidgetItem(KeysView, {say(group.Title)});
        title->setFirstColumnSpanned(true);
        QFont bold = font();
        bold.setBold(true);
        title->setFont(0, bold);
        for (const auto& [keys, effect] : group.Lines) {
            auto* const line = new QTreeWidgetItem(title, {say(keys), say(effect)});
            line->setToolTip(1, line->text(1));
        }
    }
    KeysView->expandAll();
}

// A sheet that explains keys must not cut its explanations off, whatever the language.
void ShortcutSheet::FitTexts() {
    const QAbstractItemView& view = *KeysView;
    const QMargins margins = layout()->contentsMargins();
    const int wanted = view.sizeHintForColumn(0) + view.sizeHintForColumn(1) + 2 * view.frameWidth() +
                       view.verticalScrollBar()->sizeHint().width() + margins.left() + margins.right();
    resize(std::max(width(), wanted), height());
}
