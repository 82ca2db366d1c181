// The contract with the library's callers, marked as what the library exports: everything else stays hidden.
#pragma once

#pragma GCC visibility push(default)
#include "vdsdm.h"
#pragma GCC visibility pop
