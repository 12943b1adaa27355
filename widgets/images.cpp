#include "widgets/images.h"

#include <QtGlobal>

/// Outside of any namespace, as the macro demands.
static void initWidgetsResources()
{
    Q_INIT_RESOURCE(widgets);
}

namespace VEK {

void initImages()
{
    initWidgetsResources();
}

} // namespace VEK
