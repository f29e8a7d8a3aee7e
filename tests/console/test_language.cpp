#include "fixtures.h"
#include "language.h"

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTranslator>
#include <QXmlStreamReader>

#include <algorithm>

namespace {

/// %1, %n, %p% and the tags of rich text, in any order.
QStringList Placeholders(const QString& text) {
    static const QRegularExpression pattern(QStringLiteral("%[0-9a-z]|<[^>]*>"));
    QStringList found;
    for (auto match = pattern.globalMatch(text); match.hasNext();)
        found += match.next().captured();
    found.sort();
    return found;
}

TEST(German, IsCompleteAndKeepsEveryPlaceholder) {
    const QTemporaryDir directory;
    const QString copy = directory.filePath(QStringLiteral("zorvic_de.ts"));
    ASSERT_TRUE(QFile::copy(QStringLiteral(ZORVIC_GERMAN), copy));
    const QStringList arguments = QStringLiteral(ZORVIC_LUPDATE_FLAGS).split(QLatin1Char(' ')) +
                                  QStringLiteral(ZORVIC_TRANSLATED_SOURCES).split(QLatin1Char('|')) +
                                  QStringList{QStringLiteral("-ts"), copy};
    ASSERT_EQ(QProcess::execute(QStringLiteral(ZORVIC_LUPDATE), arguments), 0);
    QFile file(copy);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QXmlStreamReader xml(&file);
    QString source;
    int messages = 0;
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement) continue;
        if (xml.name() == QLatin1String("source")) {
            source = xml.readElementText();
            ++messages;
        } else if (xml.name() == QLatin1String("translation")) {
            EXPECT_FALSE(xml.attributes().hasAttribute(QStringLiteral("type"))) << source.toStdString();
            const QString text = xml.readElementText(QXmlStreamReader::IncludeChildElements);
            EXPECT_FALSE(text.isEmpty()) << source.toStdString();
            if (!source.contains(QLatin1String("%n"))) {
                EXPECT_EQ(Placeholders(text), Placeholders(source)) << source.toStdString();
            }
        }
    }
    EXPECT_FALSE(xml.hasError()) << xml.errorString().toStdString();
    EXPECT_GT(messages, 300);
}

/// A view in German; what the next test shows is English again.
class GermanView : public ViewTest {
protected:
    GermanView() { UseLanguage(*qApp, QStringLiteral("de_DE.UTF-8")); }
    ~GermanView() override {
        Close();
        for (auto* const translator : qApp->findChildren<QTranslator*>())
            delete translator;
    }
};

TEST_F(GermanView, SpeaksGermanButForWhatTheUnitTells) {
    Preset(2).Name = "Delete";
    Open();
    EXPECT_EQ(View->TakeButton->text(), QStringLiteral("Start"));
    EXPECT_EQ(List().headerItem()->text(2), QStringLiteral("Name"));
    EXPECT_EQ(List().headerItem()->text(3), QStringLiteral("Notizen"));
    EXPECT_EQ(List().topLevelItem(1)->text(2), QStringLiteral("Delete"));
    Unit.Fail("Take", Zorvic::ZORVIC_STATUS_MISUSED);
    Click("TakeButton");
    EXPECT_EQ(View->RefusalLabel->text(), QStringLiteral("Nicht ausgeführt: Start (der Zuspieler lehnt es ab)"));
}

TEST(Language, StaysEnglishWithoutATranslation) {
    UseLanguage(*qApp, QStringLiteral("tlh"));
    EXPECT_EQ(QCoreApplication::translate("ZorvicViewUI", "End"), QStringLiteral("End"));
}

}  // namespace
