#include "language.h"

#include "qtversions.h"

#include <QCoreApplication>
#include <QTranslator>

#include <memory>

namespace {

/// The application owns it from then on.
bool Install(QCoreApplication& application, const QString& file, const QString& directory) {
    auto translator = std::make_unique<QTranslator>(&application);
    return translator->load(file, directory) && QCoreApplication::installTranslator(translator.release());
}

}  // namespace

void UseLanguage(QCoreApplication& application, const QString& name) {
    const QString language = name.left(2).toLower();
    if (!Install(application, QStringLiteral("zorvic_") + language, QStringLiteral(":/translations"))) return;
    // Of Qt's own texts, as in the dialog that saves a file; they may not be there.
    Install(application, QStringLiteral("qtbase_") + language, QtTranslations());
}
