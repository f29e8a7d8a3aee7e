#pragma once

class QCoreApplication;
class QString;

/// Makes the program speak this language ("de", "de_DE.UTF-8"), where it has a translation; English otherwise. What
/// units tell stays as they tell it. Before any window is made.
void UseLanguage(QCoreApplication& application, const QString& name);
