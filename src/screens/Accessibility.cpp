#include "screens/Accessibility.h"

#include <QAccessible>
#include <QQuickItem>

// The only private headers of the program: Qt gives no other way to an item's interface.
#include <QtQuick/private/qaccessiblequickitem_p.h>
#include <QtQuick/private/qquickitem_p.h>

namespace talvenor {

namespace {

/// Qt Quick's own interface, which forgets that an item can be disabled, that a field can be written to, that
/// a progress bar has a value, and that the text of a secure field is nobody's business.
class AccessibleItem final : public QAccessibleQuickItem, public QAccessibleEditableTextInterface
{
public:
    using QAccessibleQuickItem::QAccessibleQuickItem;

    [[nodiscard]] QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleQuickItem::state();
        if (!item()->isEnabled()) {
            state.disabled = true;
            state.focusable = false;
        }
        return state;
    }

    [[nodiscard]] QString text(QAccessible::Text kind) const override
    {
        return kind == QAccessible::Value && isSecure() ? shownText() : QAccessibleQuickItem::text(kind);
    }

    [[nodiscard]] QString text(int startOffset, int endOffset) const override
    {
        return isSecure() ? shownText().mid(startOffset, endOffset - startOffset)
                          : QAccessibleQuickItem::text(startOffset, endOffset);
    }

    [[nodiscard]] int characterCount() const override
    {
        return isSecure() ? static_cast<int>(shownText().size()) : QAccessibleQuickItem::characterCount();
    }

    // Bullets have no words and no lines: each question about such a part is answered with the whole.
    QString textBeforeOffset(int offset, QAccessible::TextBoundaryType boundary, int *start,
                             int *end) const override
    {
        return isSecure() ? wholeText(start, end)
                          : QAccessibleQuickItem::textBeforeOffset(offset, boundary, start, end);
    }

    QString textAfterOffset(int offset, QAccessible::TextBoundaryType boundary, int *start,
                            int *end) const override
    {
        return isSecure() ? wholeText(start, end)
                          : QAccessibleQuickItem::textAfterOffset(offset, boundary, start, end);
    }

    QString textAtOffset(int offset, QAccessible::TextBoundaryType boundary, int *start,
                         int *end) const override
    {
        return isSecure() ? wholeText(start, end)
                          : QAccessibleQuickItem::textAtOffset(offset, boundary, start, end);
    }

    // The rows of a list come in the order in which they were made, and among them are those that wait to be
    // used again; what is there is read from top to bottom.
    [[nodiscard]] int childCount() const override
    {
        return role() == QAccessible::List ? static_cast<int>(rowsFromTop().size())
                                           : QAccessibleQuickItem::childCount();
    }

    [[nodiscard]] QAccessibleInterface *child(int index) const override
    {
        if (role() != QAccessible::List)
            return QAccessibleQuickItem::child(index);
        const QList<QQuickItem *> rows = rowsFromTop();
        return index >= 0 && index < rows.size() ? QAccessible::queryAccessibleInterface(rows.at(index))
                                                 : nullptr;
    }

    [[nodiscard]] int indexOfChild(const QAccessibleInterface *child) const override
    {
        if (role() != QAccessible::List)
            return QAccessibleQuickItem::indexOfChild(child);
        return static_cast<int>(rowsFromTop().indexOf(qobject_cast<QQuickItem *>(child->object())));
    }

    void *interface_cast(QAccessible::InterfaceType type) override
    {
        if (type == QAccessible::EditableTextInterface && role() == QAccessible::EditableText &&
            canBeWrittenTo())
            return static_cast<QAccessibleEditableTextInterface *>(this);
        // Qt Quick gives values to sliders and their like, and to progress bars none.
        if (type == QAccessible::ValueInterface && role() == QAccessible::ProgressBar)
            return static_cast<QAccessibleValueInterface *>(this);
        return QAccessibleQuickItem::interface_cast(type);
    }

    void insertText(int offset, const QString &text) override { replaceText(offset, offset, text); }
    void deleteText(int startOffset, int endOffset) override { replaceText(startOffset, endOffset, {}); }

    /// A negative end means the end of the text; positions beyond it are taken to be there.
    void replaceText(int startOffset, int endOffset, const QString &text) override
    {
        if (!canBeWrittenTo())
            return;
        QString content = item()->property("text").toString();
        const int length = static_cast<int>(content.size());
        const int start = std::clamp(startOffset, 0, length);
        const int end = endOffset < 0 ? length : std::clamp(endOffset, start, length);
        content.replace(start, end - start, text);
        // Our fields hold more than they lay out: the rest stays, unless all is replaced.
        const QVariant rest = item()->property("rest");
        if (rest.isValid() && (start > 0 || end < length))
            content += rest.toString();
        item()->setProperty(rest.isValid() ? "wholeText" : "text", content);
    }

private:
    /// True if the item is a field that does not show what is typed.
    [[nodiscard]] bool isSecure() const { return item()->property("echoMode").toInt() != 0; }

    [[nodiscard]] QList<QQuickItem *> rowsFromTop() const
    {
        QList<QQuickItem *> rows = childItems();
        rows.removeIf([](QQuickItem *row) { return QQuickItemPrivate::get(row)->culled; });
        std::stable_sort(rows.begin(), rows.end(), [](const QQuickItem *a, const QQuickItem *b) {
            return a->mapToScene({}).y() < b->mapToScene({}).y();
        });
        return rows;
    }

    [[nodiscard]] QString shownText() const { return item()->property("displayText").toString(); }

    QString wholeText(int *start, int *end) const
    {
        QString whole = shownText();
        *start = 0;
        *end = static_cast<int>(whole.size());
        return whole;
    }

    [[nodiscard]] bool canBeWrittenTo() const
    {
        return item()->isEnabled() && item()->property("text").isValid() &&
               !item()->property("readOnly").toBool();
    }
};

QAccessibleInterface *createInterface(const QString &className, QObject *object)
{
    if (className != QLatin1String("QQuickItem"))
        return nullptr;
    auto *const item = qobject_cast<QQuickItem *>(object);
    if (!item || !QQuickItemPrivate::get(item)->isAccessible)
        return nullptr;
    return new AccessibleItem(item); // the accessibility cache owns it
}

} // namespace

void installAccessibility()
{
    QAccessible::installFactory(createInterface);
}

} // namespace talvenor
