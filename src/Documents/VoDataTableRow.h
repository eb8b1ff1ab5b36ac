#pragma once

#include <Core/VoDeque.h>
#include <Core/VoSharedPtr.h>
#include <Documents/VoDataTable.h>
#include <Documents/VoDataTableItem.h>

/// One row of a VoDataTable. Copies share the items.
struct VOCORE_EXPORT VoDataTableRow
{
    VoDeque<VoSharedPtr<VoDataTableItem>> items;              ///< Left to right.
    VoDataTable::ItemType type = VoDataTable::ItemType::Data; ///< Whether the row is a header.
};
