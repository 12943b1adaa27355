#include "triggerui/images.h"

#include <QtGlobal>

/// Outside of any namespace, as the macro demands.
static void initTriggerUiResources()
{
    Q_INIT_RESOURCE(triggerui);
}

namespace VEK {

void initImages()
{
    initTriggerUiResources();
}

} // namespace VEK
