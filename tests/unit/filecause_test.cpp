#include "import/references/filecause.h"

#include <QtCore/QTemporaryDir>

#include <gtest/gtest.h>

namespace Atelier::Vel {

TEST(FileCauseTest, EachKindOfFileHasItsCause) {
    const QTemporaryDir folder;
    EXPECT_EQ(causeOfUnreadable(QString()), "no such file");
    EXPECT_EQ(causeOfUnreadable(folder.filePath("none")), "no such file");
    EXPECT_EQ(causeOfUnreadable(folder.path()), "is a directory");
    EXPECT_EQ(causeOfUnreadable("/dev/null"), "is not a regular file");
    EXPECT_EQ(causeOfUnreadable("/proc/version"), "cannot be read");
}

} // namespace Atelier::Vel
