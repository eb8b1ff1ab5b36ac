#pragma once

#include <Documents/VoDataTable.h>
#include <XML/VoAbstractXMLStreamLoaderObject.h>

/// The table that the rule VoXMLObject<VoDataTable>::LoadRule() builds from an element.
class VOCORE_EXPORT VoLoadedDataTable : public VoAbstractXMLStreamLoaderObject
{
public:
    explicit VoLoadedDataTable(VoDataTable loaded); ///< Takes the table.
    ~VoLoadedDataTable() override;

    int typeCode() const override; ///< 1: a table, the one kind of document object so far.

    VoDataTable table; ///< The table, for the caller to take.
};
