// Everything that an ATL class is written with. Stands in for the platform's atlcom.h; connection
// points, tear-offs, enumerators, error information and the registrar are left out.
#pragma once

#include "platform/atl/atldispatch.h"
#include "platform/atl/atlfactory.h"
#include "platform/atl/atlobject.h"
#include "platform/atl/atlroot.h"
