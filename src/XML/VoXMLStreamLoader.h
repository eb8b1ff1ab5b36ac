#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoUniquePtr.h>

#include <functional>
#include <memory>

class VoStreamXMLElementReader;
class VoStreamXMLReader;

/// Builds objects from an XML document by rules: functions that make one object from one element.
///
/// The rule for an element is the specific rule for its path, if there is one, else the global rule for its name.
/// Global rules compare names without regard to case, specific rules compare paths with it.
///
///     VoXMLStreamLoader loader;
///     loader.addGlobalRule("item", [](VoXMLStreamElementLoader element) { return VoUniquePtr<Item>::Make(element); });
///     VoUniquePtr<VoAbstractXMLStreamLoaderObject> root = loader.load(path);
///
/// Copies share one set of rules and settings, without locking; a loader and its copies belong to one thread. Rules may
/// be added while a document is loading; a rule reaches its loader by reference, since one that held a copy would keep
/// itself alive. A moved-from loader shares nothing: it has no rules.
class VOCORE_EXPORT VoXMLStreamLoader
{
public:
    /// Builds the object of one element. It may throw; it may return an empty pointer, which is passed on. A rule that
    /// is an empty function makes its elements count as having none.
    using Builder = std::function<VoUniquePtr<VoAbstractXMLStreamLoaderObject>(VoXMLStreamElementLoader element)>;

    VoXMLStreamLoader(); ///< No rules.

    /// @name Copies and moves
    /// @{
    VoXMLStreamLoader(const VoXMLStreamLoader& other);                ///< Shares the rules.
    VoXMLStreamLoader(VoXMLStreamLoader&& other) noexcept;            ///< Takes the rules over.
    VoXMLStreamLoader& operator=(const VoXMLStreamLoader& other);     ///< Shares the rules.
    VoXMLStreamLoader& operator=(VoXMLStreamLoader&& other) noexcept; ///< Takes the rules over.
    virtual ~VoXMLStreamLoader();                                     ///< The rules go with the last copy.
    /// @}

    /// Adds the rule for all elements of a name.
    /// @throws VoInvalidParameterException "Global rule with the given name already exists: " + name, and keeps the
    /// rule there was
    void addGlobalRule(const VoString& name, Builder builder);
    /// Adds the rule for the elements at a path.
    /// @throws VoInvalidParameterException "Specific rule with the given path already exists: " + path, and keeps the
    /// rule there was
    void addSpecificRule(const VoXMLPath& path, Builder builder);
    /// The rule for an element; an empty function when there is none.
    Builder rule(VoAbstractXMLElementReader& element) const;

    /// From now on load() refuses a document with a document type declaration: VoInvalidXMLException "Document type
    /// declarations are not allowed". For documents from outside, which have no business defining entities.
    void refuseDocumentTypes();

    /// Builds the root element's object; empty, with nothing built, when the root has no rule. The document is read to
    /// its end, so one that is truncated or has trailing garbage fails also when the rules did not look so far.
    ///
    /// The device is opened for reading unless it is already.
    /// @throws VoInvalidXMLException for a document that is not well formed
    /// @throws VoStackLimitException when elements handed to rules are nested more than 1000 deep, and whatever the
    /// device and the rules throw, unchanged; where a rule failed is logged (category "xml", diagnostic)
    VoUniquePtr<VoAbstractXMLStreamLoaderObject> load(VoIODevice& device) const;
    /// The same for a file.
    /// @throws VoFileNotFoundException, VoCannotOpenFileException too
    VoUniquePtr<VoAbstractXMLStreamLoaderObject> load(const VoFilePath& file) const;

private:
    friend class VoXMLStreamElementLoader;
    struct Private;

    VoUniquePtr<VoAbstractXMLStreamLoaderObject> load(VoStreamXMLReader& reader) const;
    const Builder* find(const VoStreamXMLElementReader& element) const;
    Private& rules();

    std::shared_ptr<Private> m_private;
};
