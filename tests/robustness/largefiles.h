#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QFile>
#include <QtCore/QString>
#include <QtCore/QTemporaryDir>

#include <gtest/gtest.h>

namespace Atelier::Vel::Testing {

/// A folder for large files that are written piece by piece.
class LargeFiles {
public:
    QString path(const char* name) const { return _folder.filePath(QString::fromLatin1(name)); }

    /// Writes `head`, the results of `line` for 0 to `count` - 1, and `tail`. Returns: the path.
    template<typename Line>
    QString write(const char* name, const QByteArray& head, int count, Line line,
                  const QByteArray& tail = {}) const {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        QByteArray block = head;
        for (int i = 0; i < count; ++i) {
            block += line(i);
            if (block.size() > kBlock) {
                EXPECT_EQ(file.write(block), block.size());
                block.clear();
            }
        }
        block += tail;
        EXPECT_EQ(file.write(block), block.size());
        return path(name);
    }
    QString repeat(const char* name, const QByteArray& head, const QByteArray& line, int count,
                   const QByteArray& tail = {}) const {
        return write(
            name, head, count, [&line](int) { return line; }, tail);
    }

private:
    static constexpr int kBlock = 1 << 20;

    QTemporaryDir _folder;
};

} // namespace Atelier::Vel::Testing
