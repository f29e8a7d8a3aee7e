#include "aboutdialog.h"

#include "widgets/placement.h"

#include <QIcon>
#include <QPixmap>
#include <QShortcut>

AboutDialog::AboutDialog() {
    setupUi(this);
    setAttribute(Qt::WA_DeleteOnClose);
    connect(new QShortcut(Qt::Key_Escape, this), &QShortcut::activated, this, &QWidget::close);
    PlaceOverMainWindow(*this);
    setWindowIcon(QIcon(QStringLiteral(":icons/icon.png")));
    LogoLabel->setPixmap(QPixmap(QStringLiteral(":icons/aboutlogo.png")));
    ShowVersions({});
    connect(DismissButton, &QPushButton::clicked, this, &AboutDialog::OnDismissClicked);
}

void AboutDialog::ShowVersions(const QStringList& lines) {
    VersionsLabel->setText(lines.join(QLatin1Char('\n')));
    VersionsLabel->setVisible(!lines.isEmpty());
}

void AboutDialog::OnDismissClicked() {
    // Later, because the button that was clicked goes with the dialog.
    deleteLater();
}
