#include "platform/qt/QtControls.h"

#include "platform/qt/QtMainQueue.h"

#include <QAccessible>
#include <QApplication>
#include <QFocusEvent>
#include <QRegularExpression>
#include <QScopedValueRollback>
#include <QStyle>

#include <algorithm>
#include <utility>

namespace join::platform {

namespace {

constexpr int longestInput = 1 << 20; // characters; nobody types more, and a stray paste does no harm
constexpr int longestToolTip = 1000;
constexpr int textMargin = 6;        // pixels
constexpr int roomBesidePrompt = 24; // pixels, for margins, frame and cursor
constexpr int promptAlpha = 160;
constexpr int errorPointSize = 13;
constexpr double largeFactor = 1.2;

QString toQString(const std::string& text) { return QString::fromStdString(text); }

QString part(const std::string& text, std::size_t offset, std::size_t length = std::string::npos) {
    return toQString(text.substr(offset, length)).toHtmlEscaped().replace('\n', "<br>");
}

/// Returns the message as rich text in which only the link has a meaning.
QString richText(const MessageText& message) {
    const std::string& text = message.text;
    if (!message.link)
        return part(text, 0);
    const MessageText::Link& link = *message.link;
    return part(text, 0, link.offset) +
           QString("<a href=\"%1\" style=\"color: blue\">%2</a>")
               .arg(toQString(link.address).toHtmlEscaped(), part(text, link.offset, link.length)) +
           part(text, link.offset + link.length);
}

/// Makes a label's link reachable by keyboard: Tab selects it, so that Return opens it.
class LinkKeys final : public QObject {
public:
    LinkKeys(QLabel& label, qsizetype start, qsizetype length)
        : QObject(&label), label_(label), start_(static_cast<int>(start)), length_(static_cast<int>(length)) {
        label.installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override {
        if ((event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut) &&
            isByTab(*static_cast<QFocusEvent*>(event)))
            label_.setSelection(start_, event->type() == QEvent::FocusIn ? length_ : 0);
        return QObject::eventFilter(watched, event);
    }

private:
    static bool isByTab(const QFocusEvent& event) {
        return event.reason() == Qt::TabFocusReason || event.reason() == Qt::BacktabFocusReason;
    }

    QLabel& label_;
    int start_;
    int length_;
};

} // namespace

QtLabel::QtLabel(QLabel& label) : label_(label) {
    label_.setTextFormat(Qt::PlainText);
    if (label_.property("large").toBool()) {
        QFont font = label_.font();
        font.setPointSizeF(font.pointSizeF() * largeFactor);
        label_.setFont(font);
    }
}

void QtLabel::setStringValue(const std::string& text) { label_.setText(toQString(text)); }

void QtLabel::announce() {
    label_.setFocusPolicy(Qt::StrongFocus);
    label_.setFocus();
    QApplication::alert(label_.window());
}

void QtLabel::setMessage(const MessageText& message) {
    label_.setTextFormat(Qt::RichText);
    label_.setTextInteractionFlags(Qt::TextBrowserInteraction);
    label_.setOpenExternalLinks(true);
    label_.setText(richText(message));
    if (message.link) {
        const auto characters = [&](std::size_t from, std::size_t length) {
            return toQString(message.text.substr(from, length)).size();
        };
        new LinkKeys(label_, characters(0, message.link->offset), // owned by the label
                     characters(message.link->offset, message.link->length));
    }
}

QtLineEdit::QtLineEdit(QLineEdit& edit)
    : edit_(edit), leastWidth_(edit.minimumWidth()), font_(edit.font()), promptFont_(font_) {
    edit_.setMaxLength(longestInput);
    edit_.setTextMargins(textMargin, 0, textMargin, 0);
    // Keys and addresses run from left to right in every language: without this, the cursor would stand on
    // the one side and the prompt on the other.
    edit_.setAlignment(QStyle::visualAlignment(edit_.layoutDirection(), Qt::AlignLeft) | Qt::AlignAbsolute);
    QObject::connect(&edit_, &QLineEdit::textChanged, &edit_, [this] { followText(); });
}

void QtLineEdit::setStringValue(const std::string& text) { edit_.setText(toQString(text)); }

std::string QtLineEdit::stringValue() const {
    static const QRegularExpression lineBreaks("[\\n\\v\\f\\r\\x{85}\\x{2028}\\x{2029}]");
    return edit_.text().replace(lineBreaks, " ").toStdString();
}

void QtLineEdit::setPlaceholder(const std::string& text) {
    // Not every desktop theme has a prompt colour that is readable on its background.
    QColor color = QApplication::palette(&edit_).color(QPalette::Text);
    color.setAlpha(promptAlpha);
    setPrompt(text, color, font_);
}

void QtLineEdit::setErrorPlaceholder(const std::string& text) {
    QFont font = font_;
    font.setPointSize(errorPointSize);
    setPrompt(text, Qt::red, font);
}

void QtLineEdit::setPrompt(const std::string& prompt, const QColor& color, const QFont& font) {
    QPalette palette;
    palette.setColor(QPalette::PlaceholderText, color);
    const QString text = toQString(prompt);
    edit_.setPalette(palette);
    edit_.setPlaceholderText(text);
    edit_.setAccessibleDescription(text);
    // For a text longer than the field. The surrounding markup makes Qt show the characters as they are.
    edit_.setToolTip("<p>" + text.left(longestToolTip).toHtmlEscaped() + "</p>");
    promptFont_ = font;
    followText();
}

void QtLineEdit::followText() {
    edit_.setFont(edit_.text().isEmpty() ? promptFont_ : font_);
    if (edit_.text().isEmpty()) // the prompt is visible
        edit_.setMinimumWidth(std::max(
            leastWidth_, edit_.fontMetrics().horizontalAdvance(edit_.placeholderText()) + roomBesidePrompt));
}

void QtLineEdit::becomeFirstResponder() {
    edit_.setFocus();
    QAccessibleEvent event(&edit_, QAccessible::Focus); // the prompt may be new, the focus need not be
    QAccessible::updateAccessibility(&event);
}

QtButton::QtButton(QPushButton& button, QtMainQueue& mainQueue) : button_(button), mainQueue_(mainQueue) {
    if (button_.isDefault())
        button_.setFocus(); // unless another control takes it
    QObject::connect(&button_, &QPushButton::clicked, &button_, [this] { act(); });
}

void QtButton::setTitle(const std::string& title) {
    button_.setText(toQString(title).replace('&', "&&")); // so that no character becomes a shortcut
}

void QtButton::setAction(std::function<void()> action) { action_ = std::move(action); }

void QtButton::act() {
    if (!action_ || isActing_)
        return;
    const QScopedValueRollback acting(isActing_, true);
    action_();
    // Clicks made while the action blocked the loop arrive now, and are dropped.
    const QtMainQueue::Hold hold(mainQueue_);
    QCoreApplication::processEvents();
}

} // namespace join::platform
