#include "XMLTestSupport.h"

#include <Core/VoObject.h>
#include <Core/VoPair.h>
#include <FileSystem/VoFilePath.h>
#include <XML/VoXMLFactory.h>
#include <XML/VoXMLLoaderOLD.h>
#include <XML/VoXMLPath.h>
#include <XML/VoXMLRule.h>
#include <XML/VoXMLTemplateFactory.h>

using xmltest::TextReader;

namespace {

class Named : public VoXMLSerializableObject
{
public:
    explicit Named(VoString objectName)
        : name(std::move(objectName))
    {
    }

    VoString name;
};

using Objects = std::vector<std::string>;

class XMLFactory : public testing::Test
{
protected:
    VoXMLFactory::Builder builder()
    {
        return [this](VoXMLElementReader& element) {
            built.push_back("+" + element.name().toStdString());
            return VoSharedPtr<VoXMLSerializableObject>(new Named(element.name()));
        };
    }

    VoXMLFactory::PostConstruction completion()
    {
        return [this](VoSharedPtr<VoXMLSerializableObject> object) {
            built.push_back("-" + object.dynamicCast<Named>()->name.toStdString());
        };
    }

    VoXMLFactory factory;
    Objects built;
};

TEST_F(XMLFactory, BuildsEveryElementAndCompletesChildrenFirst)
{
    factory.registerBuilder("a", builder(), completion());
    factory.registerBuilder("a/b", builder());
    factory.registerBuilder("a/b/c", builder());
    factory.registerBuilder("a/d", builder(), completion());
    factory.changePostConstruction("a/b", completion());
    TextReader reader("<a><b><c/></b>text<d/></a>");
    auto root = factory.load(*reader);
    EXPECT_EQ(root.dynamicCast<Named>()->name, "a");
    EXPECT_EQ(built, (Objects{"+a", "+b", "+c", "-b", "+d", "-d", "-a"}));
    EXPECT_EQ(reader->next(), VoXMLStreamReader::EndDocument);
    built.clear();
    TextReader inside("<x><a/><c/></x>");
    inside->scan("a");
    factory.load(*inside);
    EXPECT_EQ(built, (Objects{"+a", "-a"})) << "from the current start tag";
    EXPECT_EQ(inside->nextElement()->name(), "c");
}

TEST_F(XMLFactory, UnregisteredPathsFailTheLoad)
{
    factory.registerBuilder("a", builder());
    EXPECT_THROW_MSG(factory.load(*TextReader("<a><b/></a>")), VoUnknownXMLElementException, "Unknown element: a/b");
    EXPECT_THROW_MSG(factory.load(*TextReader("<A/>")), VoUnknownXMLElementException, "Unknown element: A");
    EXPECT_THROW_MSG(factory.changePostConstruction("a/b", completion()), VoUnknownXMLElementException,
                     "Unknown element: a/b");
    TextReader atEnd("<a/>");
    factory.load(*atEnd);
    EXPECT_EQ(atEnd->next(), VoXMLStreamReader::EndDocument);
    EXPECT_THROW_MSG(factory.load(*atEnd), VoNullXMLStreamElementException, "Null XML stream element");
}

TEST_F(XMLFactory, SecondBuilderForAPathIsRefusedAndTheFirstKept)
{
    factory.registerBuilder("a", builder());
    EXPECT_THROW_MSG(factory.registerBuilder("a", VoXMLFactory::Builder(builder()), completion()),
                     VoInvalidUseException, "Builder for given path already exists: a");
    factory.load(*TextReader("<a/>"));
    EXPECT_EQ(built, (Objects{"+a"}));
}

TEST_F(XMLFactory, BuildersMayReadTextAndChildrenThemselves)
{
    factory.registerBuilder("a", [this](VoXMLElementReader& element) {
        built.push_back(element.readText().toStdString());
        for (auto child : element.children())
            built.push_back(child->name().toStdString());
        return VoSharedPtr<VoXMLSerializableObject>();
    });
    EXPECT_TRUE(factory.load(*TextReader("<a>t<b/><c/></a>")).isNull());
    EXPECT_EQ(built, (Objects{"t", "b", "c"}));
}

TEST_F(XMLFactory, RecursionIsLimited)
{
    VoXMLPath path;
    for (int level = 0; level < 1001; ++level) {
        path.push("a");
        factory.registerBuilder(path, builder());
    }
    EXPECT_THROW_MSG(factory.load(*TextReader(xmltest::Nested(1001))), VoStackLimitException, "Stack limit reached");
}

class Shapes : public VoXMLTemplateFactory
{
public:
    struct Prefix : CreationArgument
    {
        explicit Prefix(VoString prefixText)
            : text(std::move(prefixText))
        {
        }
        VoString text;
    };

    Shapes() { registerClass("circle", &Create); }

    using VoXMLTemplateFactory::addError;

private:
    static VoXMLSerializableObject* Create(VoXMLElementReader& element, const CreationArgument* argument)
    {
        const auto* prefix = dynamic_cast<const Prefix*>(argument);
        const VoString text = prefix ? prefix->text : VoString(argument ? "default " : "null ");
        return new Named(text + element.name());
    }
};

TEST(XMLTemplateFactory, CreatesByElementNameWithTheCallersArgument)
{
    Shapes shapes;
    TextReader reader("<Circle><square/></Circle>");
    auto circle = reader->nextElement();
    const auto created = [&](VoXMLSerializableObject* object) {
        return dynamic_cast<Named&>(*VoUniquePtr<VoXMLSerializableObject>(object)).name;
    };
    const Shapes::Prefix prefix("big ");
    EXPECT_TRUE(shapes.isRegistered("CIRCLE"));
    EXPECT_FALSE(shapes.isRegistered("square"));
    EXPECT_EQ(created(shapes.create(*circle, &prefix)), "big Circle");
    EXPECT_EQ(created(shapes.create(*circle)), "default Circle");
    EXPECT_EQ(created(shapes.create(*circle, nullptr)), "null Circle");
    EXPECT_THROW_MSG(shapes.create(*circle->nextChild()), VoUnknownXMLElementException, "Unknown element: square");
    shapes.addError(VoInvalidUseException("first"));
    shapes.addError(VoUnknownXMLElementException("x"));
    EXPECT_EQ(shapes.errors(), (VoList<VoString>{"first", "Unknown element: x"}));
}

class Tag : public VoObject
{
public:
    explicit Tag(std::string tagText)
        : text(std::move(tagText))
    {
    }

    std::string text;
};

class XMLLoaderOLD : public testing::Test
{
protected:
    void add(const VoXMLPath& path, VoXMLRule::Action action)
    {
        loader->add(VoUniquePtr<VoXMLRule>::Make(path, std::move(action)));
    }

    VoXMLRule::Action note(const std::string& rule)
    {
        return [this, rule](VoXMLRule&, VoXMLElementReader& element) {
            seen.push_back(rule + ":" + element.name().toStdString());
        };
    }

    VoSharedPtr<VoXMLLoaderOLD> loader = VoXMLLoaderOLD::Create();
    Objects seen;
};

TEST_F(XMLLoaderOLD, AppliesRulesByPathInDocumentOrder)
{
    add("a/b", note("b"));
    add("a", note("a"));
    add("a/x/y", note("y"));
    loader->load(*TextReader("<a><b><b/></b><x><y/></x><B/><b/></a>"));
    EXPECT_EQ(seen, (Objects{"a:a", "b:b", "y:y", "b:b"}));
}

TEST_F(XMLLoaderOLD, SecondRuleForAPathIsRefused)
{
    add("a", note("a"));
    EXPECT_THROW_MSG(add("a", note("b")), VoXMLDuplicateRuleException, "Duplicate rule for XML path: a");
    EXPECT_THROW_MSG(loader->add(VoUniquePtr<VoXMLRule>()), VoNullPointerException,
                     "VoUniquePtr dereferencing nullptr");
}

TEST_F(XMLLoaderOLD, ChildRulesSeeTheMemoryOfTheParentsLatestElement)
{
    add("r/group", [this](VoXMLRule& rule, VoXMLElementReader& element) {
        rule.addChildRule("item", [this](VoXMLRule& child, VoXMLElementReader& item) {
            const auto tag = child.readMemory("TAG").dynamicCast<Tag>();
            seen.push_back(tag->text + item.readText().toStdString());
            EXPECT_TRUE(child.readMemory("other").isNull());
        });
        const VoSharedPtr<VoObject> tag(new Tag(element.readAttribute("name").toStdString()));
        rule.setMemory({"tag", tag});
    });
    loader->load(*TextReader("<r><group name='a'><item>1</item></group><group name='b'><item>2</item><item>3</item>"
                             "</group></r>"));
    EXPECT_EQ(seen, (Objects{"a1", "b2", "b3"}));
}

TEST_F(XMLLoaderOLD, RuleMayReplaceItselfWhileItRuns)
{
    VoXMLRule* parent = nullptr;
    add("r", [&](VoXMLRule& rule, VoXMLElementReader&) {
        parent = &rule;
        const auto marker = std::make_shared<std::string>("first");
        rule.addChildRule("item", [this, &parent, marker](VoXMLRule&, VoXMLElementReader&) {
            parent->addChildRule("item", note("second"));
            seen.push_back(*marker); // still there
        });
    });
    loader->load(*TextReader("<r><item/><item/></r>"));
    EXPECT_EQ(seen, (Objects{"first", "second:item"}));
}

TEST_F(XMLLoaderOLD, ChildRulesNeedALoader)
{
    const char* message = "XML rule cannot add a child rule when it is not assigned to a parent loader";
    VoXMLRule alone("a", note("a"));
    EXPECT_THROW_MSG(alone.addChildRule("b", note("b")), VoNullPointerException, message);
    alone.setLoader(loader);
    alone.addChildRule("b", note("b"));
    loader.reset();
    EXPECT_TRUE(alone.loader().expired());
    EXPECT_THROW_MSG(alone.addChildRule("b", note("b")), VoNullPointerException, message);
}

TEST_F(XMLLoaderOLD, FailingReaderFailsTheLoad)
{
    const char* message = "Reader failed to load content";
    EXPECT_THROW_MSG(loader->load(*TextReader("<a><b></a>")), VoXMLException, message);
    EXPECT_THROW_MSG(loader->load(*TextReader("")), VoXMLException, message);
    add("a", [](VoXMLRule&, VoXMLElementReader& element) { element.readAttribute("x"); });
    EXPECT_THROW_MSG(loader->load(*TextReader("<a/>")), VoUnknownXMLAttributeException, "Unknown attribute: x");
    add("b", [](VoXMLRule&, VoXMLElementReader& element) { element.readText(); });
    EXPECT_THROW_MSG(loader->load(*TextReader("<b><c>")), VoXMLException, message); // met within the action
    add("c", [](VoXMLRule&, VoXMLElementReader&) { throw VoInvalidXMLException("refused"); });
    EXPECT_THROW_MSG(loader->load(*TextReader("<c/>")), VoInvalidXMLException, "refused");
}

} // namespace
