#include "application.h"

#include <gmock/gmock.h>

#include <QFile>
#include <QPixmap>
#include <QRegularExpression>
#include <QTimer>

#include <stdexcept>

namespace {

TEST(ApplicationObject, LogsWhatEscapesAHandlerAndGoesOn) {
    testing::internal::CaptureStderr();
    QTimer::singleShot(0, qApp, [] { throw std::out_of_range("no such entry"); });
    QTimer::singleShot(0, qApp, [] { throw 42; });
    QTimer::singleShot(0, qApp, &QApplication::quit);
    QApplication::exec();
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                testing::MatchesRegex("ZorvicUI: ERROR: .*no such entry\n.*unknown type.*\n"));
}

TEST(Resources, HoldTheSheetAndItsImagesWithoutRulesForEveryWidget) {
    QFile sheet(QStringLiteral(":qdarkstyle/style.qss"));
    ASSERT_TRUE(sheet.open(QFile::ReadOnly));
    const QString rules = QString::fromUtf8(sheet.readAll());
    EXPECT_FALSE(rules.contains(QRegularExpression(QStringLiteral("(^|[},\\s])(\\*|QWidget)\\s*[{,:]"))));
    auto images = QRegularExpression(QStringLiteral("url\\(([^)]*)\\)")).globalMatch(rules);
    ASSERT_TRUE(images.hasNext());
    while (images.hasNext()) {
        const auto path = images.next().captured(1);
        EXPECT_FALSE(QPixmap(path).isNull()) << path.toStdString();
    }
}

}  // namespace
