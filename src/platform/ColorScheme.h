#pragma once

#include <functional>
#include <optional>

namespace talvenor {

/// Whether the screens are light or dark.
enum class ColorScheme { light, dark };

/// What the desktop says about the colours that its programs should have. Main thread.
class ColorSchemePreference
{
public:
    ColorSchemePreference() = default;
    ColorSchemePreference(const ColorSchemePreference &) = delete;
    ColorSchemePreference &operator=(const ColorSchemePreference &) = delete;
    virtual ~ColorSchemePreference() = default;

    /// What the user prefers; nothing where the desktop does not say, or has not said so far.
    [[nodiscard]] virtual std::optional<ColorScheme> preferred() const = 0;

    /// `changed` is called from the event loop after each change of `preferred`. One listener at a time; an
    /// empty function ends it.
    virtual void setListener(std::function<void()> changed) = 0;
};

} // namespace talvenor
