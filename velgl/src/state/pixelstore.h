#pragma once

namespace Atelier::Vel {

/// Sets the pixel store parameters to plain rows in client memory. Restores the client's parameters and pixel
/// buffer on destruction.
class ScopedPixelStore {
public:
    enum class Direction { Pack, Unpack };
    /// The alignment of rows within the scope: OpenGL's default of 4 bytes, or what the client has set.
    enum class Alignment { Plain, Client };

    explicit ScopedPixelStore(Direction direction, Alignment alignment = Alignment::Plain);
    ~ScopedPixelStore();
    ScopedPixelStore(const ScopedPixelStore&) = delete;
    ScopedPixelStore& operator=(const ScopedPixelStore&) = delete;

private:
    static constexpr int kSettingCount = 8;

    Direction _direction;
    int _settings[kSettingCount] = {};
    unsigned int _buffer = 0;
};

} // namespace Atelier::Vel
