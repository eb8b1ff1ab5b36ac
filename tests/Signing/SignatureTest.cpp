#include <Signing/Signature.h>

#include <ScratchFolder.h>
#include <VoTestSupport.h>

using namespace vo::signing;

namespace {

Passphrase Words(const std::string& text)
{
    return Passphrase(text.data(), text.size());
}

void Verify(const PublicKey& key, const std::string& document, const std::string& signature)
{
    key.verify(document.data(), document.size(), Signature::Parse(VoString(signature)));
}

std::string Sign(const SecretKey& key, const std::string& document)
{
    return key.sign(document.data(), document.size(), "serial 7").toString().toStdString();
}

// Whether the program of that name, which knows nothing of us, ends well.
bool Minisign(const std::string& arguments)
{
    return std::system(("minisign " + arguments + " >/dev/null 2>&1").c_str()) == 0;
}

} // namespace

TEST(Signature, MinisignVerifiesOursAndWeVerifyItsOwn)
{
    VO_SKIP_WITHOUT_SHELL();
    ASSERT_TRUE(Minisign("-v")) << "minisign is not installed";
    const vo::test::ScratchFolder folder;
    const std::string at = folder.native().string() + "/";
    for (const std::string& document : {std::string("text\n"), std::string(), std::string(300000, '\x80')}) {
        const SecretKey key = SecretKey::Generate();
        folder.write("document", document);
        folder.write("document.minisig", Sign(key, document));
        folder.write("key.pub", std::string(key.publicKey().toString().toStdString()));
        EXPECT_TRUE(Minisign("-Vm " + at + "document -p " + at + "key.pub"));
        EXPECT_TRUE(Minisign("-Vm " + at + "document -P " + std::string(key.publicKey().toLine().toStdString())));
        folder.write("document", document + "x");
        EXPECT_FALSE(Minisign("-Vm " + at + "document -p " + at + "key.pub"));

        folder.write("document", document);
        ASSERT_TRUE(Minisign("-G -f -W -p " + at + "its.pub -s " + at + "its.key"));
        ASSERT_TRUE(Minisign("-S -m " + at + "document -s " + at + "its.key -t 'all of it'"));
        const PublicKey its = PublicKey::Parse(VoString(folder.read("its.pub")));
        Verify(its, document, folder.read("document.minisig"));
        EXPECT_EQ(Signature::Parse(VoString(folder.read("document.minisig"))).trustedComment(), "all of it");
        // One that is not encrypted.
        const SecretKey its2 = SecretKey::Parse(VoString(folder.read("its.key")), Passphrase());
        EXPECT_EQ(its2.publicKey(), its);
    }
}

TEST(Signature, ASealedKeyOpensWithItsPassphraseOnlyAndForMinisignToo)
{
    VO_SKIP_WITHOUT_SHELL();
    const vo::test::ScratchFolder folder;
    const SecretKey key = SecretKey::Generate();
    const VoString sealed = key.toString(Words("open sesame"), SecretKey::Effort::Quick);
    EXPECT_NE(key.toString(Words("open sesame"), SecretKey::Effort::Quick), sealed) << "the salt";
    const SecretKey opened = SecretKey::Parse(sealed, Words("open sesame"));
    EXPECT_EQ(opened.publicKey(), key.publicKey());
    std::string renumbered = key.publicKey().toLine().toStdString();
    renumbered[5] = renumbered[5] == 'A' ? 'B' : 'A';
    EXPECT_NE(PublicKey::Parse(VoString(renumbered)), key.publicKey());
    Verify(key.publicKey(), "text", Sign(opened, "text"));
    EXPECT_THROW_MSG(SecretKey::Parse(sealed, Words("open sesame ")), VoValidationException, "Wrong passphrase");
    EXPECT_THROW_MSG(key.toString(Passphrase()), VoInvalidParameterException, "Empty passphrase");

    const std::string at = folder.native().string() + "/";
    folder.write("key", std::string(sealed.toStdString()));
    folder.write("document", "text");
    EXPECT_EQ(std::system(
                  ("echo 'open sesame' | minisign -S -m " + at + "document -s " + at + "key >/dev/null 2>&1").c_str()),
              0);
    Verify(key.publicKey(), "text", folder.read("document.minisig"));
}

TEST(Signature, NoBitOfASignatureOrADocumentCanBeTurned)
{
    const SecretKey key = SecretKey::Generate();
    const PublicKey publicKey = key.publicKey();
    const std::string document = "what was signed";
    const std::string signature = Sign(key, document);
    Verify(publicKey, document, signature);
    const std::size_t begin = signature.find('\n');
    for (std::size_t i = begin + 1; i + 1 < signature.size(); ++i) {
        std::string changed = signature;
        changed[i] = static_cast<char>(changed[i] ^ 1);
        EXPECT_THROW(Verify(publicKey, document, changed), VoValidationException) << i;
    }
    for (std::size_t i = 0; i < document.size() * 8; ++i) {
        std::string changed = document;
        changed[i / 8] = static_cast<char>(changed[i / 8] ^ (1 << i % 8));
        EXPECT_THROW_MSG(Verify(publicKey, changed, signature), VoValidationException,
                         "Signature does not fit the document");
    }
    EXPECT_THROW_MSG(Verify(SecretKey::Generate().publicKey(), document, signature), VoValidationException,
                     "Signature is of another key: " + key.id());
    std::string moved = signature;
    moved.replace(moved.find("serial 7"), 8, "serial 8");
    EXPECT_THROW_MSG(Verify(publicKey, document, moved), VoValidationException, "Trusted comment was changed");
}

TEST(Signature, BrokenFilesAreRefusedForWhatTheyAre)
{
    const SecretKey key = SecretKey::Generate();
    const std::string sealed = key.toString(Words("x"), SecretKey::Effort::Quick).toStdString();
    const std::string signature = Sign(key, "");
    const std::string publicText = key.publicKey().toString().toStdString();
    for (std::size_t size = 0; size + 1 < std::max(sealed.size(), signature.size()); size += 3) {
        EXPECT_THROW_MSG(SecretKey::Parse(VoString(sealed.substr(0, std::min(size, sealed.size() - 2))), Words("x")),
                         VoValidationException, "Not a secret key");
        EXPECT_THROW_MSG(Signature::Parse(VoString(signature.substr(0, std::min(size, signature.size() - 2)))),
                         VoValidationException, "Not a signature");
        EXPECT_THROW_MSG(PublicKey::Parse(VoString(publicText.substr(0, std::min(size, publicText.size() - 2)))),
                         VoValidationException, "Not a public key");
    }
    EXPECT_THROW(SecretKey::Parse(VoString(signature), Words("x")), VoValidationException);
    std::string crlf = signature;
    for (std::size_t at = 0; (at = crlf.find('\n', at)) != std::string::npos; at += 2)
        crlf.insert(at, 1, '\r');
    Verify(key.publicKey(), "", crlf);
    const VoString longest(std::string(1000, 'x'));
    const Signature whole = Signature::Parse(key.sign("", 0, longest, "for all").toString());
    EXPECT_EQ(whole.trustedComment(), longest);
    EXPECT_EQ(whole.comment(), "for all");
    for (const char* comment : {"two\nlines", "\x7f", "tab\t"}) {
        EXPECT_THROW_MSG(key.sign("", 0, comment), VoInvalidParameterException, "Invalid comment");
        EXPECT_THROW_MSG(key.sign("", 0, "", comment), VoInvalidParameterException, "Invalid comment");
    }
    EXPECT_THROW_MSG(key.sign("", 0, VoString(std::string(1001, 'x'))), VoInvalidParameterException, "Invalid comment");
}
