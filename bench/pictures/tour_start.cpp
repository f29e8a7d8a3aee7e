#include "assetsloadingdialog.h"
#include "showoperator.h"
#include "tour.h"
#include "units.h"

#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>

void TourStart(ShowOperator& op, const PictureUnits& units) {
    op.Picture("start-no-unit");
    auto& chooser = op.Chooser;
    chooser.show();
    const auto count = static_cast<int>(units.All.size());
    op.Becomes([&] { return chooser.ZorvicFinderList->topLevelItemCount() >= count; });
    op.Picture("chooser", chooser);
    op.Picture("start-chooser");
    chooser.ZorvicIPBox->setText(QStringLiteral("127.0.0.99"));
    QTest::mouseClick(chooser.ConnectButton, Qt::LeftButton);
    op.Becomes([&] { return chooser.ConnectButton->isEnabled() && !chooser.ResultLabel->text().isEmpty(); });
    op.Picture("chooser-no-answer", chooser);

    op.Connect(units.All.at(0)->Host());
    AssetsLoadingDialog loading;
    loading.SetTotal(7);
    for (int done = 0; done < 3; ++done)
        loading.Increment();
    loading.show();
    op.Picture("assets-loading", loading);
}
