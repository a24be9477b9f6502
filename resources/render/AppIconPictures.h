#pragma once

#include <QString>

namespace talvenor::render {

/// Writes the application icon, AppIcon.svg in that folder, as AppIcon.png and in all sizes of an icon theme
/// as icons/SIZExSIZE/talvenor.png. Sizes that have a drawing of their own, AppIcon-SIZE.svg, are taken from
/// that: the smallest ones are drawn pixel by pixel. Throws PlatformError if a file cannot be read or
/// written.
void writeAppIconPictures(const QString &resources);

} // namespace talvenor::render
