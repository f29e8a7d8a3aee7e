#include "application.h"

#include <gmock/gmock.h>

#include <QFile>
#include <QPixmap>
#include <QRegularExpression>
#include <QTimer>

#include <stdexcept>

namespace {

using testing::HasSubstr;
using testing::StartsWith;

TEST(ApplicationObject, LogsWhatEscapesAHandlerAndGoesOn) {
    testing::internal::CaptureStderr();
    bool wentOn = false;
    QTimer::singleShot(0, qApp, [] { throw std::out_of_range("no such entry"); });
    QTimer::singleShot(0, qApp, [] { throw 42; });
    QTimer::singleShot(0, qApp, [&wentOn] {
        wentOn = true;
        QApplication::quit();
    });
    QApplication::exec();
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_TRUE(wentOn);
    EXPECT_THAT(log, StartsWith("ZorvicUI: ERROR: "));
    EXPECT_THAT(log, HasSubstr("no such entry\n"));
    EXPECT_THAT(log, HasSubstr("unknown type"));
}

TEST(Resources, HoldTheSheetWithoutRulesForEveryWidget) {
    QFile sheet(QStringLiteral(":qdarkstyle/style.qss"));
    ASSERT_TRUE(sheet.open(QFile::ReadOnly));
    const QString rules = QString::fromUtf8(sheet.readAll());
    EXPECT_FALSE(rules.contains(QRegularExpression(QStringLiteral("(^|[},\\s])(\\*|QWidget)\\s*[{,:]"))));
    // What the sheet refers to is compiled in, too.
    auto images = QRegularExpression(QStringLiteral("url\\(([^)]*)\\)")).globalMatch(rules);
    ASSERT_TRUE(images.hasNext());
    while (images.hasNext()) {
        const auto path = images.next().captured(1);
        EXPECT_FALSE(QPixmap(path).isNull()) << path.toStdString();
    }
}

}  // namespace
