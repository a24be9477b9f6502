#include "screens/ScreensModule.h"

// Generated with the module's types; it has no header.
extern void qml_register_types_Talvenor();

namespace talvenor {

void initializeScreens()
{
    qml_register_types_Talvenor();
}

} // namespace talvenor
