#pragma once

#include <QLabel>

class QTextDocument;

/// A label for texts with asset paths in them. It breaks them anywhere, so that its width never depends on the text,
/// and leaves out the middle of a plain text that is still too long. text() is the whole text always.
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
    void LayOut(QTextDocument& document, const QString& content, int width) const;
    void LayOutElided(QTextDocument& document) const;
};
