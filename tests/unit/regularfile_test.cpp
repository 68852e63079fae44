#include "files/regularfile.h"

#include <utility>
#include <vector>

#include <fcntl.h>

#include <gmock/gmock.h>

#include "support/opendescriptors.h"

namespace Atelier::Vel {

namespace {

using Testing::openDescriptors;

Descriptor openedNull() {
    return Descriptor(open("/dev/null", O_RDONLY | O_CLOEXEC));
}

} // namespace

TEST(DescriptorTest, IsClosedWithItsOwner) {
    const std::vector<int> before = openDescriptors();
    {
        const Descriptor owner = openedNull();
        EXPECT_TRUE(owner.isOpen());
        EXPECT_EQ(openDescriptors().size(), before.size() + 1);
    }
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_FALSE(Descriptor().isOpen());
    EXPECT_EQ(Descriptor().value(), -1);
}

TEST(DescriptorTest, ZeroIsOpen) {
    Descriptor standardInput(0);
    EXPECT_TRUE(standardInput.isOpen());
    EXPECT_EQ(standardInput.release(), 0);
    EXPECT_FALSE(standardInput.isOpen());
}

TEST(DescriptorTest, MovesToOneOwner) {
    const std::vector<int> before = openDescriptors();
    Descriptor first = openedNull();
    const int value = first.value();
    Descriptor second = std::move(first);
    EXPECT_EQ(first.value(), -1); // NOLINT(bugprone-use-after-move): what it is then
    EXPECT_EQ(second.value(), value);
    EXPECT_EQ(openDescriptors().size(), before.size() + 1);
}

TEST(DescriptorTest, AssignmentClosesWhatWasThereBefore) {
    const std::vector<int> before = openDescriptors();
    Descriptor owner = openedNull();
    const int value = owner.value();
    owner = openedNull();
    EXPECT_NE(owner.value(), value);
    EXPECT_EQ(openDescriptors().size(), before.size() + 1);
    Descriptor& same = owner;
    owner = std::move(same);
    EXPECT_TRUE(owner.isOpen());
    EXPECT_NE(fcntl(owner.value(), F_GETFD), -1) << "it is still open";
    owner = Descriptor();
    EXPECT_EQ(openDescriptors(), before);
}

} // namespace Atelier::Vel
