#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

/// Base of every object that can write itself as the content of an XML element. The caller opens the element and gives
/// it its name.
class VOCORE_EXPORT VoAbstractXMLStreamWriterObject
{
public:
    virtual ~VoAbstractXMLStreamWriterObject(); ///< Objects are deleted through their base.

    /// Fills the element: all attributes, then all child elements or the text.
    virtual void write(VoXMLElementWriter& element) const = 0;

protected:
    /// @name Only whole objects are made, copied and assigned
    /// @{
    VoAbstractXMLStreamWriterObject() = default;                                       ///< For derived classes.
    VoAbstractXMLStreamWriterObject(const VoAbstractXMLStreamWriterObject&) = default; ///< For derived classes.
    /// For derived classes.
    VoAbstractXMLStreamWriterObject& operator=(const VoAbstractXMLStreamWriterObject&) = default;
    /// @}

    virtual void writeAttributes(VoXMLElementWriter& element) const = 0; ///< Writes the attributes only.
    virtual void writeElements(VoXMLElementWriter& element) const = 0;   ///< Writes the child elements only.
};
