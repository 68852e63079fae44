#pragma once

#include <unistd.h>

#include <gtest/gtest.h>

namespace Atelier::Vel::Testing {

/// Drops root's rights during its lifetime, because root may read every file.
class WithoutRootsRights {
public:
    WithoutRootsRights() : _user(geteuid()) {
        constexpr uid_t kNobody = 65534;
        if (_user == 0) {
            EXPECT_EQ(seteuid(kNobody), 0);
        }
    }
    ~WithoutRootsRights() { EXPECT_EQ(seteuid(_user), 0); }
    WithoutRootsRights(const WithoutRootsRights&) = delete;
    WithoutRootsRights& operator=(const WithoutRootsRights&) = delete;

private:
    uid_t _user;
};

} // namespace Atelier::Vel::Testing
