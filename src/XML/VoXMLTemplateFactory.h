#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoList.h>
#include <Core/VoString.h>
#include <XML/VoXMLSerializableObject.h>

#include <memory>

/// Base of factories that choose a class by the name of an element, compared without regard to case. A derived factory
/// registers its classes; its creation functions may record problems and go on.
///
/// Belongs to one thread.
class VOCORE_EXPORT VoXMLTemplateFactory
{
public:
    /// What a caller passes through create() to the creation function; derive from it.
    class VOCORE_EXPORT CreationArgument
    {
    public:
        CreationArgument();                                         ///< Carries nothing.
        CreationArgument(const CreationArgument& other);            ///< Carries nothing.
        CreationArgument& operator=(const CreationArgument& other); ///< Carries nothing.
        virtual ~CreationArgument();                                ///< Tells derived arguments apart.
    };
    /// Makes the object of one element. The caller owns it; null is allowed.
    using CreationFunction = VoXMLSerializableObject* (*)(VoXMLElementReader& element,
                                                          const CreationArgument* argument);

    VoXMLTemplateFactory(); ///< No classes.
    VoXMLTemplateFactory(const VoXMLTemplateFactory&) = delete;
    VoXMLTemplateFactory& operator=(const VoXMLTemplateFactory&) = delete;
    virtual ~VoXMLTemplateFactory(); ///< Factories are derived from.

    bool isRegistered(const VoString& name) const; ///< True when elements of that name can be created.

    /// Makes the object of an element with a default argument; the caller owns it.
    /// @throws VoUnknownXMLElementException with the name of an element whose class is not registered
    VoXMLSerializableObject* create(VoXMLElementReader& element) const;
    /// The same with the caller's argument, which may be null.
    VoXMLSerializableObject* create(VoXMLElementReader& element, const CreationArgument* argument) const;

    const VoList<VoString>& errors() const; ///< The messages recorded so far, in order.

protected:
    /// Names the function for the elements of a name; a later registration replaces an earlier one.
    void registerClass(const VoString& name, CreationFunction function);
    /// Records an exception's message.
    void addError(const VoException& exception);

private:
    struct Private;

    std::unique_ptr<Private> m_private;
};
