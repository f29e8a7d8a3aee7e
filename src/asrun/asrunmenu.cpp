#include "asrun/asrunmenu.h"

#include "asrun/asrunwindow.h"

#include <QAction>
#include <QPointer>

#include <map>
#include <memory>
#include <utility>

void AddAsRunAction(QMenu& menu, std::function<std::optional<AsRunUnit>()> current) {
    auto* action = new QAction(QMenu::tr("As-run sheet"), &menu);
    action->setObjectName(QStringLiteral("AsRunMenuItem"));
    menu.insertAction(menu.actions().value(0), action);
    const auto windows = std::make_shared<std::map<std::string, QPointer<AsRunWindow>>>();
    // They read from units until they are gone, which the end of the program must not cut off.
    QObject::connect(action, &QObject::destroyed, [windows] {
        for (const auto& [host, window] : *windows)
            delete window.data();
    });
    QObject::connect(action, &QAction::triggered, &menu, [windows, current = std::move(current)] {
        const auto unit = current();
        if (!unit) return;
        auto& window = (*windows)[unit->Host];
        if (!window) window = new AsRunWindow(unit->Host, unit->Label);  // deletes itself
        window->show();
        window->raise();
        window->activateWindow();
    });
}
