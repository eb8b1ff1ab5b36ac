// XML: written forwards, read by rules, kept as a tree.

#include <Core/VoDeque.h>
#include <Core/VoUniquePtr.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoTemporaryDir.h>
#include <XML/VoAbstractXMLStreamLoaderObject.h>
#include <XML/VoXMLDomDocument.h>
#include <XML/VoXMLStreamElementLoader.h>
#include <XML/VoXMLStreamElementWriter.h>
#include <XML/VoXMLStreamLoader.h>
#include <XML/VoXMLStreamWriter.h>

#include <iostream>

namespace {

void write(const VoFilePath& file)
{
    //! [write]
    VoXMLStreamWriter writer(file, true); // true: each element on a line of its own
    writer.startDocument();
    {
        const auto circuit = writer.createElement("circuit"); // closed when the handle goes
        circuit->writeAttribute("name", "Low pass <1 kHz>");  // escaped as needed
        for (const char* part : {"R1", "C1"})
            circuit->createElement("part")->writeAttribute("id", part);
    }
    writer.finishDocument(); // rethrows whatever the disk had against it
    //! [write]
}

//! [rules]
// What the elements become. A rule makes the object of one element; a parent takes the objects of its children.
enum Type
{
    PartType,
    CircuitType
};

struct Part : VoAbstractXMLStreamLoaderObject
{
    explicit Part(VoXMLStreamElementLoader& element)
        : id(element.attribute("id"))
    {
    }
    int typeCode() const override { return PartType; }
    VoString id;
};

struct Circuit : VoAbstractXMLStreamLoaderObject
{
    explicit Circuit(VoXMLStreamElementLoader& element)
        : name(element.attribute("name", "unnamed"))
    {
        element.processChildren([this](VoUniquePtr<VoAbstractXMLStreamLoaderObject> child) {
            if (child && child->typeCode() == PartType) // the child of a rule that makes nothing would be null
                ids << dynamic_cast<const Part&>(*child).id;
        });
    }
    int typeCode() const override { return CircuitType; }
    VoString name;
    VoDeque<VoString> ids;
};

void load(const VoFilePath& file)
{
    VoXMLStreamLoader loader;
    loader.refuseDocumentTypes(); // a file from outside
    loader.addGlobalRule("circuit",
                         [](VoXMLStreamElementLoader element) { return VoUniquePtr<Circuit>::Make(element); });
    loader.addGlobalRule("part", [](VoXMLStreamElementLoader element) { return VoUniquePtr<Part>::Make(element); });
    const auto root = loader.load(file); // in one pass; the file may be larger than the memory
    const auto& circuit = dynamic_cast<const Circuit&>(*root);
    std::cout << circuit.name << ':';
    for (const VoString& id : circuit.ids)
        std::cout << ' ' << id;
    std::cout << '\n';
}
//! [rules]

void tree(const VoFilePath& file)
{
    //! [tree]
    VoXMLDomDocument document;
    document.load(file);
    std::cout << document.toString();
    //! [tree]
}

} // namespace

int main()
{
    const VoTemporaryDir scratch;
    const VoFilePath file = scratch.path("circuit.xml");
    write(file);
    load(file);
    tree(file);
}

/* Prints:
Low pass <1 kHz>: R1 C1
<?xml version="1.0" encoding="UTF-8"?><circuit name="Low pass &lt;1 kHz&gt;">
	<part id="R1"/>
	<part id="C1"/>
</circuit>
*/
