// The firmware's initialisation block, for those who need the addresses in it.
#pragma once

#include "Adapter.h"

// The block as it is in force: with the host's addresses where they are the host's.
INITFWISCSI blockInForce(Adapter &adapter);
