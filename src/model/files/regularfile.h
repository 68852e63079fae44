#pragma once

#include <utility>

namespace Atelier::Vel {

/// Owns a file descriptor.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int value) : _value(value) {}
    ~Descriptor() { close(); }
    Descriptor(Descriptor&& other) noexcept : _value(other.release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept;

    bool isOpen() const { return _value >= 0; }
    int value() const { return _value; }
    int release() { return std::exchange(_value, -1); }

private:
    void close() const;

    int _value = -1;
};

/// What becomes of a path whose last name is a symbolic link.
enum class LastLink { Follow, Refuse };

/// Opens a regular file for reading, without waiting for anyone. `path` starts from `folder`, a descriptor or
/// AT_FDCWD. Anything else (a pipe, a device, what the kernel shows under /proc and /sys) stays unopened or,
/// when it takes the place of the file meanwhile, unread.
/// Returns: no open descriptor when there is no regular file or it cannot be read.
Descriptor openRegularFile(int folder, const char* path, LastLink link);

} // namespace Atelier::Vel
