#include "triggerui/waitingtip.h"
