#include "fixtures.h"
#include "style.h"
#include "text/timetext.h"

#include <QFile>
#include <QRegularExpression>

#include <cmath>

namespace {

/// As the guidelines for accessible web pages define it: 1 for equal colours, 21 for black on white.
double Contrast(const QColor& one, const QColor& other) {
    const auto luminance = [](const QColor& colour) {
        const auto linear = [](double part) {
            return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) + 0.0722 * linear(colour.blueF());
    };
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

struct Pair {
    QString Where;
    QColor Text;
    QColor Ground;
};

QColor Property(const QString& rule, const char* name) {
    const QRegularExpression line(QStringLiteral("(?:^|[;{\\s])%1:\\s*(#\\w{6})").arg(QLatin1String(name)));
    const auto match = line.match(rule);
    return match.hasMatch() ? QColor(match.captured(1)) : QColor();
}

/// Text on its ground in every rule of the sheet that sets one of both. What the rule leaves open is as in the rule of
/// the same class without a state, else as in the palette. What is switched off may be dimmer.
std::vector<Pair> PairsOfSheet() {
    QFile file(QStringLiteral(":qdarkstyle/style.qss"));
    EXPECT_TRUE(file.open(QFile::ReadOnly));
    const QString sheet = QString::fromUtf8(file.readAll()).remove(QRegularExpression(QStringLiteral("/\\*[^*]*\\*/")));
    static const QRegularExpression Rule(QStringLiteral("([^{}]+)\\{([^}]*)\\}"));
    static const QRegularExpression Drawn(
        QStringLiteral("::(indicator|groove|handle|chunk|.*-arrow|.*-button|sub-page|add-page|separator)|QScrollBar"));
    std::map<QString, std::pair<QColor, QColor>> plain;
    std::vector<Pair> pairs;
    for (auto rules = Rule.globalMatch(sheet); rules.hasNext();) {
        const auto rule = rules.next();
        const QColor text = Property(rule.captured(2), "color");
        const QColor ground = Property(rule.captured(2), "background-color");
        for (const QString& part : rule.captured(1).split(QLatin1Char(','))) {
            const QString selector = part.trimmed();
            const QString name = selector.section(QLatin1Char('#'), 0, 0);
            static const QRegularExpression State(QStringLiteral("(?<!:):(?!:)[\\w:!-]+$"));
            auto& base = plain[QString(name).remove(State)];
            if (!selector.contains(State) && text.isValid()) base.first = text;
            if (!selector.contains(State) && ground.isValid()) base.second = ground;
            if ((!text.isValid() && !ground.isValid()) || selector.contains(QLatin1String(":disabled")) ||
                selector.contains(Drawn))
                continue;
            const auto either = [](const QColor& own, const QColor& inherited, QPalette::ColorRole role) {
                return own.isValid() ? own : inherited.isValid() ? inherited : qApp->palette().color(role);
            };
            pairs.push_back({selector, either(text, base.first, QPalette::WindowText),
                             either(ground, base.second, QPalette::Window)});
        }
    }
    return pairs;
}

/// A label with a text that brings its own colour.
Pair AsShown(QLabel& label) {
    static const QRegularExpression Colour(QStringLiteral("color=\"([^\"]+)\""));
    return {label.text(), QColor(Colour.match(label.text()).captured(1)),
            label.grab().toImage().pixelColor(1, label.height() / 2)};
}

class StyleTest : public ViewTest {
protected:
    StyleTest() {
        TryLoadStyle(*qApp);
        Open();
        View->UpdateStatus();
    }
    ~StyleTest() override {
        Close();
        qApp->setStyleSheet({});
    }
};

TEST_F(StyleTest, TextStandsOutFromWhatIsBehindItEverywhere) {
    auto pairs = PairsOfSheet();
    EXPECT_GT(pairs.size(), 20U) << "the sheet was not understood";
    const auto colour = [](QPalette::ColorRole role, QPalette::ColorGroup group = QPalette::Active) {
        return qApp->palette().color(group, role);
    };
    using P = QPalette;
    for (const auto& [text, ground] : {std::pair(P::WindowText, P::Window),
                                       {P::Text, P::Base},
                                       {P::Text, P::AlternateBase},
                                       {P::Text, P::Midlight},
                                       {P::ButtonText, P::Button},
                                       {P::HighlightedText, P::Highlight},
                                       {P::ToolTipText, P::ToolTipBase},
                                       {P::PlaceholderText, P::Base},
                                       {P::Link, P::Window}})
        pairs.push_back({QStringLiteral("role %1 on %2").arg(text).arg(ground), colour(text), colour(ground)});
    pairs.push_back({QStringLiteral("quiet selection"), colour(P::HighlightedText, P::Inactive),
                     colour(P::Highlight, P::Inactive)});
    // Colours that are given, with the grounds made for them.
    for (const int remaining : {30000, 20000, 10000}) {
        for (const auto ground : {P::Base, P::AlternateBase})
            pairs.push_back({QStringLiteral("time"), QColor(RemainingTimeColor(remaining)), colour(ground)});
    }
    for (auto* const label : {View->AssetsLabel, View->StatusLabel})
        pairs.push_back(AsShown(*label));
    Unit.Reachable = false;
    View->UpdateStatus();
    pairs.push_back(AsShown(*View->StatusLabel));
    for (const auto& [where, text, ground] : pairs)
        EXPECT_GE(Contrast(text, ground), 4.5)
            << qPrintable(where) << ' ' << qPrintable(text.name()) << " on " << qPrintable(ground.name());
}

TEST_F(StyleTest, ASelectedRowShowsHowUrgentItsTimeIs) {
    Play(1, 9000);
    Pump(Zorvic::ZORVIC_STATE_PRESETSTATES, Zorvic::ZORVIC_STATE_TIMECODE);
    auto* const row = View->LookupPresetItem(1);
    ASSERT_TRUE(row->isSelected());
    const int column = ZorvicView::PresetColumnTypeToIndex(ZorvicView::PresetColumn::TIME);
    const QModelIndex time = List().model()->index(List().indexOfTopLevelItem(row), column);
    const QImage cell = List().viewport()->grab(List().visualRect(time)).toImage();
    // Letters have soft edges.
    const auto isRed = [](const QColor& c) { return c.red() > 128 && c.red() > 2 * std::max(c.green(), c.blue()); };
    int red = 0;
    for (int x = 0; x < cell.width(); ++x)
        for (int y = 0; y < cell.height(); ++y)
            red += isRed(cell.pixelColor(x, y)) ? 1 : 0;
    EXPECT_GT(red, 20);
}

TEST_F(StyleTest, TheBorderBelowTheListIsWhereItWasLeftInEveryTab) {
    View->LayoutSplit->setSizes({200, 300});
    emit View->LayoutSplit->splitterMoved(200, 1);
    const auto left = View->LayoutSplit->sizes();
    ZorvicView later("guid", "host");
    EXPECT_NE(later.LayoutSplit->sizes(), left);
    later.resize(View->size());
    later.show();
    EXPECT_EQ(later.LayoutSplit->sizes(), left);
}

}  // namespace
