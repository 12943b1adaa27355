#pragma once

/// For hosts that edit match values: the texts are of the register image's layer.
#include "image/matchvalue.h"
