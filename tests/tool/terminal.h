#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace Atelier::Vel::Testing {

/// A terminal that receives standard error during its lifetime.
class Terminal {
public:
    Terminal();
    ~Terminal();
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    /// The device, for other processes.
    const QString& name() const { return _name; }
    void setColumns(int columns);
    /// What was printed since the last call.
    QByteArray text();

private:
    int _master;
    int _standardError;
    QString _name;
};

} // namespace Atelier::Vel::Testing
