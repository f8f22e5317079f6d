#pragma once

// The small-file reader lives in core/ now; this name stays until its last user moves over.
#include "core/SmallFile.h"
