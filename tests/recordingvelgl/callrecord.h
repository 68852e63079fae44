#pragma once

#include <map>
#include <string>

#include <QtCore/QHash>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Atelier::Vel::Testing {

/// The calls of a program to VelGL. The VelGL in this folder has the headers of the real one but makes no
/// OpenGL calls: it records each call with its arguments. It defines only the operations that VelModel uses,
/// so a program that needs another one does not link. Instance data are values, and most of them are copies.
/// The record contains only those created with a name; their contents appear when a collection is created
/// from them.
class CallRecord {
public:
    static CallRecord& instance();

    void add(const QString& call) {
        if (!isPaused)
            _calls.append(call);
    }
    /// The calls since the last use of this function, one per line, in order.
    std::string take();

    /// Removes all calls and objects, and numbers objects from 0 again.
    void restart();
    /// Gives an object its name in the record: `kind` and a number.
    QString number(const void* object, const QString& kind);
    void setName(const void* object, const QString& name) { _names.insert(object, name); }
    /// Its name; "null" for null, and the address of an object that is not alive.
    QString nameOf(const void* object) const;
    void forget(const void* object) { _names.remove(object); }
    /// The names of the objects that are alive, sorted.
    QStringList liveObjects() const;

    /// Whether binds and uploads succeed; they are recorded in any case.
    bool succeeds = true;
    /// Whether calls and new objects are left out.
    bool isPaused = false;
    /// The number of further objects that the factories of a context make.
    int objectsLeft = 0;

private:
    QStringList _calls;
    QHash<const void*, QString> _names;
    std::map<QString, int> _counts;
};

/// Records a call of a numbered object: "buffer 0: bind".
template<typename Object>
void recordCall(const Object* object, const QString& call) {
    CallRecord& record = CallRecord::instance();
    record.add(record.nameOf(object) + QStringLiteral(": ") + call);
}

/// Text for arguments.
QString quoted(const QString& text);
QString hexadecimal(unsigned int value);
/// Values of a numeric type in brackets. If there are more than 32: the first three, the number of values and
/// the last one.
template<typename Number>
QString listed(const Number* values, int count) {
    constexpr int kMaxShown = 32;
    QStringList texts;
    for (int i = 0; i < count; ++i)
        if (count <= kMaxShown || i < 3 || i == count - 1)
            texts << QString::number(values[i]);
        else if (i == 3)
            texts << QStringLiteral("... %1 values ...").arg(count);
    return QLatin1Char('[') + texts.join(QLatin1Char(' ')) + QLatin1Char(']');
}

} // namespace Atelier::Vel::Testing
