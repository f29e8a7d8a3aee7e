#pragma once

#include <QLabel>
#include <QTextOption>

class QTextDocument;

/// A label for texts with asset paths in them. It breaks them behind separators, inside a name only where that is wider
/// than the label, so that its width never depends on the text. Of a plain path that is still too long it leaves out
/// folders, so that the file name always shows. text() is the whole text always.
class WrapLabel : public QLabel {
    Q_OBJECT

public:
    using QLabel::QLabel;

    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    bool IsRich() const;
    void LayOut(QTextDocument& document, const QString& content, int width,
                QTextOption::WrapMode mode = QTextOption::WrapAtWordBoundaryOrAnywhere) const;
    void LayOutElided(QTextDocument& document) const;
};
