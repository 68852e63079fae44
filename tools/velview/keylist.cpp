#include "keylist.h"

#include <QtCore/QCoreApplication>
#include <QtWidgets/QAction>

#include "vieweractions.h"

namespace Atelier::Vel::Viewer {

namespace {

struct Gesture {
    const char* gesture;
    const char* effect;
};

constexpr Gesture kGestures[] = {
    {QT_TRANSLATE_NOOP("KeyList", "Left drag"), QT_TRANSLATE_NOOP("KeyList", "Orbit")},
    {QT_TRANSLATE_NOOP("KeyList", "Middle drag, Shift + left drag"), QT_TRANSLATE_NOOP("KeyList", "Pan")},
    {QT_TRANSLATE_NOOP("KeyList", "Wheel, two fingers, right drag"),
     QT_TRANSLATE_NOOP("KeyList", "Zoom towards the pointer")},
    {QT_TRANSLATE_NOOP("KeyList", "Click"), QT_TRANSLATE_NOOP("KeyList", "Select the part hit")},
    {QT_TRANSLATE_NOOP("KeyList", "Double click"), QT_TRANSLATE_NOOP("KeyList", "Centre on the point hit")},
};

QString tr(const char* text) {
    return QCoreApplication::translate("KeyList", text);
}

QString row(const QString& key, const QString& effect) {
    return QStringLiteral("<tr><td><b>%1</b>&nbsp;&nbsp;</td><td>%2</td></tr>")
        .arg(key.toHtmlEscaped(), effect.toHtmlEscaped());
}

// Without the mark of the menu's access key.
QString plainText(const QAction& action) {
    return action.text().remove(QLatin1Char('&')).remove(QStringLiteral("..."));
}

} // namespace

QString keyList(const ViewerActions& actions) {
    constexpr int kColumns = 2;
    QStringList rows;
    for (const QAction* action : actions.all())
        if (!action->shortcut().isEmpty())
            rows.append(row(action->shortcut().toString(QKeySequence::NativeText), plainText(*action)));
    const int half = (rows.size() + kColumns - 1) / kColumns;
    QString mouse;
    for (const Gesture& gesture : kGestures)
        mouse += row(tr(gesture.gesture), tr(gesture.effect));
    return QStringLiteral(
               "<table><tr><td><table>%1</table></td><td width=24></td><td><table>%2</table></td></tr>"
               "</table><hr><table>%3</table>")
        .arg(QStringList(rows.mid(0, half)).join(QString()), QStringList(rows.mid(half)).join(QString()),
             mouse);
}

} // namespace Atelier::Vel::Viewer
