#pragma once

#include <QtCore/QHash>
#include <QtCore/QString>
#include <QtCore/QVector>

namespace Atelier::Vel {

/// Names by the number of a draw command; null is what stands for none. Those that come in order from 0 on,
/// as they nearly always do, take no more than a list of them.
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
    QHash<int, QString> _others; ///< what stands in the list counts instead
};

} // namespace Atelier::Vel
