#pragma once

#include <XML/VoAbstractXMLStreamLoaderObject.h>
#include <XML/VoAbstractXMLStreamWriterObject.h>

/// Base of persistent objects: built by a loader's rule and able to write themselves.
class VOCORE_EXPORT VoAbstractXMLStreamReadWriteObject : public VoAbstractXMLStreamLoaderObject,
                                                         public VoAbstractXMLStreamWriterObject
{
public:
    ~VoAbstractXMLStreamReadWriteObject() override; ///< Objects are deleted through either base.

    /// Writes all attributes and then all child elements, the order that the writer requires.
    void write(VoXMLElementWriter& element) const override;

protected:
    /// @name Only whole objects are made, copied and assigned
    /// @{
    VoAbstractXMLStreamReadWriteObject() = default;                                          ///< For derived classes.
    VoAbstractXMLStreamReadWriteObject(const VoAbstractXMLStreamReadWriteObject&) = default; ///< For derived classes.
    /// For derived classes.
    VoAbstractXMLStreamReadWriteObject& operator=(const VoAbstractXMLStreamReadWriteObject&) = default;
    /// @}

    void writeAttributes(VoXMLElementWriter& element) const override; ///< Writes nothing unless overridden.
    void writeElements(VoXMLElementWriter& element) const override;   ///< Writes nothing unless overridden.
};
