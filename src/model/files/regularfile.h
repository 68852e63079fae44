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

/// How to open a path whose last name is a symbolic link.
enum class LastLink { Follow, Refuse };

/// Opens a regular file for reading, without blocking. `path` is relative to `folder`, a descriptor or
/// AT_FDCWD. Anything else (a pipe, a device, a file of the kernel under /proc or /sys) is not opened. If it
/// replaces the file in the meantime, it is opened but not read.
/// Returns: a descriptor that is not open if there is no regular file or it cannot be read.
Descriptor openRegularFile(int folder, const char* path, LastLink link);

} // namespace Atelier::Vel
