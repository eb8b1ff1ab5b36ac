#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoSharedPtr.h>
#include <Core/VoWeakPtr.h>
#include <XML/VoXMLPath.h>

#include <functional>
#include <memory>

class VoXMLLoaderOLD;

/// A rule of VoXMLLoaderOLD: an action for the elements at one path, with a memory of named objects that the rules of
/// its children see too.
///
/// New code uses VoXMLStreamLoader.
class VOCORE_EXPORT VoXMLRule
{
public:
    /// What to do with an element. The rule itself is passed for its memory and to add child rules.
    using Action = std::function<void(VoXMLRule& rule, VoXMLElementReader& element)>;

    /// An empty action does nothing.
    VoXMLRule(const VoXMLPath& path, Action action);
    VoXMLRule(const VoXMLRule&) = delete;
    VoXMLRule& operator=(const VoXMLRule&) = delete;
    virtual ~VoXMLRule(); ///< Rules may be derived from.

    const VoXMLPath& path() const; ///< The elements this rule is for.

    void setLoader(VoWeakPtr<VoXMLLoaderOLD> loader); ///< Called by the loader that the rule is added to.
    VoWeakPtr<VoXMLLoaderOLD> loader() const;         ///< The loader; refers to nothing before the rule was added.

    /// Remembers an object under a name, in place of one remembered before. Rules added by addChildRule() see it, also
    /// when it is set later.
    void setMemory(const VoPair<VoString, VoSharedPtr<VoObject>>& entry);
    /// The object of that name here or, failing that, in the rule that added this one, and so on; else empty. Names are
    /// compared without regard to case.
    VoSharedPtr<VoObject> readMemory(const VoString& name) const;

    /// Adds a rule for the children of that name to the same loader, in place of one added for them before.
    /// @throws VoNullPointerException "XML rule cannot add a child rule when it is not assigned to a parent loader"
    void addChildRule(const VoString& name, Action action);

    /// Runs the action.
    virtual void apply(VoXMLElementReader& element);

private:
    struct Private;

    std::unique_ptr<Private> m_private;
};
