// The contract with the adapter management library, libvdsdm.so: everything a program needs to call it.
//
// The library exchanges fixed-layout records by pointer, little-endian, each field at its natural alignment. The
// layouts are the same for i386 and x86-64; sizes and offsets are asserted beside each record.
#pragma once

#include "vdsdm/AdapterInformation.h"
#include "vdsdm/ChapTable.h"
#include "vdsdm/DeviceDatabaseEntry.h"
#include "vdsdm/DeviceParameters.h"
#include "vdsdm/FirmwareConfiguration.h"
#include "vdsdm/IsnsDiscovery.h"
#include "vdsdm/Logs.h"
#include "vdsdm/NodeInfo.h"
#include "vdsdm/Operations.h"
#include "vdsdm/ScsiPassThrough.h"
#include "vdsdm/Statistics.h"
#include "vdsdm/Status.h"
#include "vdsdm/TargetDatabase.h"
#include "vdsdm/Types.h"
