#include "XMLTestSupport.h"

#include <FileSystem/VoFilePath.h>
#include <XML/VoStreamXMLReader.h>
#include <XML/VoXMLStreamElementLoader.h>
#include <XML/VoXMLStreamLoader.h>

using xmltest::MemoryDevice;
using xmltest::Nested;

namespace {

using ObjectPtr = VoUniquePtr<VoAbstractXMLStreamLoaderObject>;

/// What a rule built, rendered as rule(path,children...).
class Node : public VoAbstractXMLStreamLoaderObject
{
public:
    explicit Node(std::string nodeText)
        : text(std::move(nodeText))
    {
    }

    int typeCode() const override { return 7; }

    std::string text;
};

std::string Text(const ObjectPtr& object)
{
    return object ? dynamic_cast<const Node&>(*object).text : "none";
}

/// A rule that collects everything: built children as they are, others in brackets.
VoXMLStreamLoader::Builder Collect(const std::string& rule)
{
    return [rule](VoXMLStreamElementLoader element) -> ObjectPtr {
        std::string text = rule + "(" + element.path().toString().toStdString();
        element.processChildren(
            [&](ObjectPtr object) { text += "," + Text(object); },
            [&](VoXMLStreamElementLoader& other) { text += ",[" + other.name().toStdString() + "]"; });
        return VoUniquePtr<Node>::Make(text + ")");
    };
}

class XMLLoader : public testing::Test
{
protected:
    std::string load(const std::string& document)
    {
        VoStringDevice device{VoString(document)};
        return Text(loader.load(device));
    }

    VoXMLStreamLoader loader;
};

TEST_F(XMLLoader, SpecificRulesOverrideGlobalOnesAtTheirPath)
{
    loader.addGlobalRule("root", Collect("root"));
    loader.addGlobalRule("item", Collect("global"));
    loader.addSpecificRule({"root", "item"}, Collect("specific"));
    EXPECT_EQ(load("<root><item><item/></item><x/></root>"),
              "root(root,specific(root/item,global(root/item/item)),[x])");
    EXPECT_EQ(load("<item><root><item/></root></item>"), "global(item,root(item/root,global(item/root/item)))");
    EXPECT_EQ(load("<ROOT><item/></ROOT>"), "root(ROOT,global(ROOT/item))") << "case counts in paths only";
    EXPECT_EQ(load("<other><item/></other>"), "none");
}

TEST_F(XMLLoader, SecondRuleForOneElementIsRefusedAndTheFirstKept)
{
    loader.addGlobalRule("a", Collect("first"));
    loader.addSpecificRule("b/c", Collect("c"));
    EXPECT_THROW_MSG(loader.addGlobalRule("A", Collect("second")), VoInvalidParameterException,
                     "Global rule with the given name already exists: A");
    EXPECT_THROW_MSG(loader.addSpecificRule({"b", "c"}, Collect("d")), VoInvalidParameterException,
                     "Specific rule with the given path already exists: b/c");
    EXPECT_EQ(load("<a/>"), "first(a)");
}

TEST_F(XMLLoader, CopiesShareRulesAddedLater)
{
    VoXMLStreamLoader copy = loader;
    copy.addGlobalRule("root", [&copy](VoXMLStreamElementLoader element) {
        copy.addGlobalRule("late", Collect("late"));
        return Collect("root")(std::move(element));
    });
    EXPECT_EQ(load("<root><late/></root>"), "root(root,late(root/late))");
    VoXMLStreamLoader moved = std::move(copy);
    copy.addGlobalRule("root", Collect("other")); // no longer shared
    EXPECT_THROW(moved.addGlobalRule("root", Collect("other")), VoInvalidParameterException);
}

TEST_F(XMLLoader, RuleIsFoundForAnElementReader)
{
    loader.addSpecificRule({"a", "b"}, Collect("b"));
    VoStringDevice device("<a><b/></a>");
    VoStreamXMLReader reader(device);
    VoStreamXMLElementReader a = *reader.nextElement();
    EXPECT_FALSE(loader.rule(a));
    auto b = a.nextChild();
    EXPECT_TRUE(loader.rule(*b));
}

TEST_F(XMLLoader, FormsOfProcessChildrenSkipWhatTheyHaveNoFunctionFor)
{
    loader.addGlobalRule("ruled", Collect("ruled"));
    std::string seen;
    const auto onObject = [&](ObjectPtr object) { seen += Text(object) + " "; };
    const auto onUnhandled = [&](VoXMLStreamElementLoader& other) { seen += other.name().toStdString() + " "; };
    const auto add = [&](const char* name, const auto& function) {
        loader.addGlobalRule(name, [&](VoXMLStreamElementLoader element) -> ObjectPtr {
            element.processChildren(function);
            return {};
        });
    };
    add("objects", onObject);
    add("others", onUnhandled);
    EXPECT_EQ(load("<objects><ruled/><plain><ruled/></plain><ruled/></objects>"), "none");
    EXPECT_EQ(seen, "ruled(objects/ruled) ruled(objects/ruled) ");
    seen.clear();
    load("<others><ruled><plain/></ruled><plain/></others>");
    EXPECT_EQ(seen, "plain ");
    seen.clear();
    load("<others><ruled/></others>");
    EXPECT_EQ(seen, "");
}

TEST_F(XMLLoader, RulesReadAttributesAndText)
{
    loader.addGlobalRule("a", [](VoXMLStreamElementLoader element) -> ObjectPtr {
        EXPECT_EQ(element.attribute("x"), "1");
        EXPECT_EQ(element.attribute("y", "default"), "default");
        EXPECT_FALSE(element.hasAttribute("X"));
        EXPECT_THROW_MSG(element.attribute("y"), VoUnknownXMLAttributeException, "Unknown attribute: y");
        std::string names;
        element.forEachAttribute([&](const VoString& name, const VoString&) { names += name.toStdString(); });
        return VoUniquePtr<Node>::Make(names + element.text().toStdString());
    });
    EXPECT_EQ(load("<a x='1' z='2'> text </a>"), "xztext");
    loader.addGlobalRule("b", [](VoXMLStreamElementLoader element) {
        const std::string text = element.text().toStdString();
        return Collect(text)(std::move(element));
    });
    EXPECT_EQ(load("<b></b>"), "(b)");
    EXPECT_EQ(load("<b>t<c/></b>"), "t(b,[c])");
}

TEST_F(XMLLoader, BrokenDocumentsAndMemoryDevicesFailTheLoad)
{
    loader.addGlobalRule("root", Collect("root"));
    loader.addGlobalRule("x", [](VoXMLStreamElementLoader) -> ObjectPtr { return VoUniquePtr<Node>::Make("x"); });
    EXPECT_EQ(load("<x><a><b/></a></x>"), "x");
    for (const char* broken : {"<x><a><b/></x>", "<x/><x/>", "<root>", "<root/>x", ""})
        EXPECT_THROW(load(broken), VoInvalidXMLException) << broken; // read to its end whatever rules read
    const std::string document = "<root><a/><b/></root>";
    for (std::size_t passed = 0; passed < document.size(); ++passed) {
        MemoryDevice device(document, passed);
        EXPECT_THROW_MSG(loader.load(device), VoIOException, "device failed");
    }
}

TEST_F(XMLLoader, ExceptionsOfRulesPropagateAndTheWalkCanGoOn)
{
    struct Refusal
    {
    };
    loader.addGlobalRule("bad", [](VoXMLStreamElementLoader element) -> ObjectPtr {
        element.processChildren([](VoXMLStreamElementLoader&) { throw Refusal(); });
        return {};
    });
    EXPECT_THROW(load("<bad><x/></bad>"), Refusal);
    loader.addGlobalRule("root", [](VoXMLStreamElementLoader element) {
        EXPECT_THROW(Collect("first")(VoXMLStreamElementLoader(VoStreamXMLElementReader(), VoXMLStreamLoader())),
                     VoInvalidXMLOperation);
        EXPECT_THROW(element.processChildren([](ObjectPtr) {}), Refusal);
        return Collect("root")(std::move(element));
    });
    EXPECT_EQ(load("<root><bad><x><y/></x><z/></bad><after/></root>"), "root(root,[after])");
}

TEST_F(XMLLoader, RecursionIsLimited)
{
    loader.addGlobalRule("a", Collect("a"));
    const auto closed = [](std::size_t levels) {
        std::string ends;
        for (std::size_t i = 0; i < levels; ++i)
            ends += "</a>";
        return Nested(levels) + ends;
    };
    EXPECT_NO_THROW(load(closed(1000)));
    EXPECT_THROW_MSG(load(closed(1001)), VoStackLimitException, "Stack limit reached");
    std::string siblings;
    for (int i = 0; i < 100000; ++i)
        siblings += "<a/>";
    EXPECT_EQ(load("<a>" + siblings + "</a>").size(),
              std::string("a(a)").size() + 100000 * std::string(",a(a/a)").size());
    loader.addGlobalRule("top", [](VoXMLStreamElementLoader) -> ObjectPtr { return VoUniquePtr<Node>::Make("top"); });
    EXPECT_EQ(load("<top>" + closed(50000) + "</top>"), "top"); // what no rule reads may be deeper
}

TEST_F(XMLLoader, StoredElementLoaderOutlivesTheDocumentAsClosed)
{
    std::optional<VoXMLStreamElementLoader> stored;
    loader.addGlobalRule("a", [&](VoXMLStreamElementLoader element) -> ObjectPtr {
        element.processChildren([&](VoXMLStreamElementLoader& child) { stored = std::move(child); });
        EXPECT_EQ(element.path(), VoXMLPath("a"));
        return {};
    });
    load("<a><b x='1'><c/></b></a>");
    ASSERT_TRUE(stored);
    EXPECT_EQ(stored->path(), VoXMLPath("a/b"));
    EXPECT_EQ(stored->attribute("x"), "1");
    EXPECT_THROW_MSG(stored->text(), VoInvalidXMLOperation, "Cannot read text from inactive element");
    EXPECT_THROW_MSG(stored->processChildren([](ObjectPtr) {}), VoInvalidXMLOperation,
                     "NextChild on closed element called");
}

TEST_F(XMLLoader, DocumentTypesAreRefusedOnRequest)
{
    loader.addGlobalRule("a", Collect("a"));
    const std::string document = "<!DOCTYPE a [<!ENTITY e '<b/>'>]><a>&e;</a>";
    EXPECT_EQ(load(document), "a(a,[b])");
    loader.refuseDocumentTypes();
    EXPECT_THROW_MSG(load(document), VoDocumentTypeException, "Document type declarations are not allowed");
    EXPECT_EQ(load("<a/>"), "a(a)");
}

} // namespace
