#pragma once

// Looks at the device's plugin list and the files that it names, opens no library, and logs a warning for each fault
// that the service library passes over in silence. Main thread.
void checkPluginList();
