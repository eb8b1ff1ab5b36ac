#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoSharedPtr.h>
#include <Core/VoUniquePtr.h>

#include <memory>

class VoXMLRule;

/// Walks a document and applies to each element the rule for its path. Kept for existing callers; new code uses
/// VoXMLStreamLoader.
class VOCORE_EXPORT VoXMLLoaderOLD
{
public:
    /// Makes a loader without rules; the only way to make one.
    static VoSharedPtr<VoXMLLoaderOLD> Create();
    VoXMLLoaderOLD(const VoXMLLoaderOLD&) = delete;
    VoXMLLoaderOLD& operator=(const VoXMLLoaderOLD&) = delete;
    ~VoXMLLoaderOLD(); ///< The rules go with their loader.

    /// Adds a rule and tells it its loader.
    /// @throws VoXMLDuplicateRuleException with the path when it has a rule already
    /// @throws VoNullPointerException for a null rule
    void add(VoUniquePtr<VoXMLRule> rule);

    /// Applies the rules to the elements from the reader's position to the end of the document, in document order,
    /// beginning with the current start tag if one was read last. Elements without a rule are passed over, but not
    /// their children; elements that a rule's action reads itself are not visited again.
    ///
    /// Exceptions of actions propagate unchanged.
    /// @throws VoXMLException "Reader failed to load content" when the reader meets a document that is not well formed,
    /// also within an action
    void load(VoXMLStreamReader& reader);

private:
    friend class VoXMLRule;
    struct Private;

    VoXMLLoaderOLD();
    void replace(std::shared_ptr<VoXMLRule> rule);
    void apply(VoXMLStreamReader& reader);

    std::unique_ptr<Private> m_private;
};
