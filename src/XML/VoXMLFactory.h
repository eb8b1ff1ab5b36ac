#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoSharedPtr.h>
#include <XML/VoXMLSerializableObject.h>

#include <functional>
#include <memory>

/// Builds an object from every element of a document, by builders keyed by the elements' paths.
///
/// An element's builder runs before its children are read, its post-construction step after all its descendants were
/// built. Belongs to one thread.
class VOCORE_EXPORT VoXMLFactory
{
public:
    /// Builds the object of one element. It may read the element's attributes and text; children it reads itself are
    /// not built again.
    using Builder = std::function<VoSharedPtr<VoXMLSerializableObject>(VoXMLElementReader& element)>;
    /// Completes an object once its element's children have been built.
    using PostConstruction = std::function<void(VoSharedPtr<VoXMLSerializableObject> object)>;

    VoXMLFactory(); ///< No builders.
    VoXMLFactory(const VoXMLFactory&) = delete;
    VoXMLFactory& operator=(const VoXMLFactory&) = delete;
    virtual ~VoXMLFactory(); ///< Factories may be derived from.

    /// Adds the builder for a path.
    /// @throws VoInvalidUseException "Builder for given path already exists: " + path, and keeps the builder there was
    void registerBuilder(const VoXMLPath& path, Builder builder);
    /// The same with a post-construction step.
    void registerBuilder(const VoXMLPath& path, Builder builder, PostConstruction postConstruction);
    /// Replaces a path's post-construction step; an empty one removes it.
    /// @throws VoUnknownXMLElementException with the path when it has no builder
    void changePostConstruction(const VoXMLPath& path, PostConstruction postConstruction);

    /// Builds the reader's current element if a start tag was read last, else the next element, and returns its object;
    /// the reader stands behind the element then. The path begins with that element's name, wherever it stands.
    /// @throws VoUnknownXMLElementException with the path of an element without a builder
    /// @throws VoNullXMLStreamElementException when there is no element
    /// @throws VoStackLimitException for elements nested more than 1000 deep, and whatever the reader and the functions
    /// throw, unchanged
    VoSharedPtr<VoXMLSerializableObject> load(VoXMLStreamReader& reader) const;
    /// Builds a file's root element and reads the file to its end.
    VoSharedPtr<VoXMLSerializableObject> load(const VoFilePath& file) const;
    /// The same for a file that is first validated as VoXMLValidator does.
    VoSharedPtr<VoXMLSerializableObject> load(const VoFilePath& file, const VoFilePath& schema) const;

private:
    struct Private;

    std::unique_ptr<Private> m_private;
};
