#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

/// Base of objects that write themselves to XML and read themselves back. A derived class overrides what it supports;
/// the others do nothing.
class VOCORE_EXPORT VoXMLSerializableObject
{
public:
    virtual ~VoXMLSerializableObject(); ///< Objects are deleted through their base.

    virtual void writeXML(VoXMLElementWriter& element) const; ///< Writes the content of an element already opened.
    virtual void writeXML(VoXMLStreamWriter& writer) const;   ///< Writes to the writer's open element.
    virtual void readXML(VoXMLElementReader& element);        ///< Takes the content of an element.

protected:
    /// @name Only whole objects are made, copied and assigned
    /// @{
    VoXMLSerializableObject() = default;                                          ///< For derived classes.
    VoXMLSerializableObject(const VoXMLSerializableObject&) = default;            ///< For derived classes.
    VoXMLSerializableObject& operator=(const VoXMLSerializableObject&) = default; ///< For derived classes.
    /// @}
};
