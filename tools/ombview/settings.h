// What the viewer remembers from one start to the next, in the registry.
#pragma once

#include "recent_files.h"

namespace ombview {

RecentFiles LoadRecentFiles();
void SaveRecentFiles(const RecentFiles& recent);

}  // namespace ombview
