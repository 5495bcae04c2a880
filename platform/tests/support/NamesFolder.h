#pragma once

#include "tests/support/TempFolder.h"

namespace test {

// A folder of service names for this test alone, for as long as it lives. Made before the clients.
class NamesFolder : public TempFolder {
public:
    NamesFolder() : TempFolder("SUBSYS_BINDER_DIR") {}
};

}  // namespace test
