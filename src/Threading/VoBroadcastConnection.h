#pragma once

#include <Core/VoExport.h>
#include <Core/VoUUID.h>
#include <Core/VoWeakPtr.h>
#include <Threading/VoTemplatedObject.h>

class VoAbstractBroadcaster;

/// What a receiver knows of its connection: its identifier and, weakly, the cell that holds the broadcaster's address.
struct VOCORE_EXPORT VoBroadcastConnection
{
    VoUUID id;                                                        ///< Identifies the connection.
    VoWeakPtr<VoTemplatedObject<VoAbstractBroadcaster*>> broadcaster; ///< Expires with the broadcaster.
};
