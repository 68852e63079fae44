#include "capturedstream.h"

#include <cstdio>

#include <unistd.h>

#include <gtest/gtest.h>

namespace Atelier::Vel::Testing {

CapturedStream::CapturedStream(int descriptor) : _descriptor(descriptor), _original(dup(descriptor)) {
    std::fflush(nullptr);
    EXPECT_TRUE(_file.open());
    EXPECT_EQ(dup2(_file.handle(), descriptor), descriptor);
}

CapturedStream::~CapturedStream() {
    std::fflush(nullptr);
    EXPECT_EQ(dup2(_original, _descriptor), _descriptor);
    close(_original);
}

QByteArray CapturedStream::text() {
    std::fflush(nullptr);
    EXPECT_TRUE(_file.seek(0));
    return _file.readAll();
}

} // namespace Atelier::Vel::Testing
