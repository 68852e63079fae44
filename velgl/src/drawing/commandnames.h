#pragma once

#include <QtCore/QHash>
#include <QtCore/QString>
#include <QtCore/QVector>

namespace Atelier::Vel {

/// Names of draw commands by number; null for none. Names that are set in order from 0, the usual case, are
/// stored in a list without keys.
class CommandNames {
public:
    void set(int command, const QString& name) {
        if (command >= 0 && command < _inOrder.size())
            _inOrder[command] = name;
        else if (command == _inOrder.size() && !name.isNull())
            _inOrder.append(name);
        else if (!name.isNull())
            _others.insert(command, name);
        else
            _others.remove(command);
    }

    QString of(int command) const {
        const bool isInOrder = command >= 0 && command < _inOrder.size();
        return isInOrder ? _inOrder[command] : _others.value(command);
    }

private:
    QVector<QString> _inOrder;
    QHash<int, QString> _others; ///< set out of order; a number below the size of _inOrder is ignored here
};

} // namespace Atelier::Vel
