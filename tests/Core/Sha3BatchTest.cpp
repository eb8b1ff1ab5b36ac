#include <Core/VoChecksum.h>
#include <Core/detail/Sha3Batch.h>
#include <VoTestSupport.h>

#include <QtCore/QByteArray>

namespace {

// Each test runs with every number of lanes that this machine has, beside the framework's digest of each message alone.
class Sha3Batch : public testing::TestWithParam<std::size_t>
{
protected:
    // Gives the messages in pieces of at most so many bytes, and says which digests differ from the framework's.
    std::vector<std::size_t> wrongOnes(const std::vector<std::string>& messages, std::size_t piece)
    {
        std::vector<std::size_t> places(messages.size());
        std::vector<std::size_t> wrong;
        std::vector<int> calls(messages.size());
        m_batch.hash(
            messages.size(),
            [&](std::size_t message, char* room, std::size_t size) {
                const std::size_t count = std::min({size, piece, messages[message].size() - places[message]});
                std::memcpy(room, messages[message].data() + places[message], count);
                places[message] += count;
                return count;
            },
            [&](std::size_t message, const VoChecksum& digest) {
                if (calls[message]++ != 0 || digest != VoChecksum(QByteArray::fromStdString(messages[message])))
                    wrong.push_back(message);
            });
        for (std::size_t i = 0; i < calls.size(); ++i)
            if (calls[i] != 1)
                wrong.push_back(i);
        return wrong;
    }

    std::string bytes(std::size_t size)
    {
        std::string text(size, '\0');
        std::generate(text.begin(), text.end(), [this] { return static_cast<char>(m_random()); });
        return text;
    }

    vo::detail::Sha3Batch m_batch{GetParam()};
    std::mt19937 m_random{20261122};
};

TEST_P(Sha3Batch, AgreesOnEveryLengthAroundTheBlocks)
{
    std::vector<std::string> messages;
    for (std::size_t size = 0; size <= 3 * 136 + 1; ++size)
        messages.push_back(bytes(size));
    for (const std::size_t room : {120 * 136, 240 * 136})
        for (const int more : {-1, 0, 1, 135, 136, 137})
            messages.push_back(bytes(room + static_cast<std::size_t>(more)));
    for (const std::size_t piece : {1, 7, 136, 1000, 1 << 20})
        EXPECT_EQ(wrongOnes(messages, piece), std::vector<std::size_t>()) << "pieces of " << piece;
}

TEST_P(Sha3Batch, AgreesOnMixturesOfLengths)
{
    for (int round = 0; round < 40; ++round) {
        std::vector<std::string> messages(m_random() % 24);
        for (std::string& message : messages)
            message = bytes(m_random() % (m_random() % 4 == 0 ? 200000 : 700));
        EXPECT_EQ(wrongOnes(messages, 1 + m_random() % 70000), std::vector<std::size_t>()) << "round " << round;
    }
}

TEST_P(Sha3Batch, EndsWithWhatReadingThrows)
{
    std::size_t done = 0;
    const auto read = [](std::size_t message, char*, std::size_t) -> std::size_t {
        if (message == 5)
            throw std::runtime_error("unreadable");
        return 0;
    };
    EXPECT_THROW(m_batch.hash(9, read, [&](std::size_t, const VoChecksum&) { ++done; }), std::runtime_error);
    EXPECT_LE(done, 5U);
    EXPECT_EQ(wrongOnes({"the next one", "is not disturbed"}, 3), std::vector<std::size_t>());
}

INSTANTIATE_TEST_SUITE_P(Lanes, Sha3Batch, testing::ValuesIn(vo::detail::Sha3Batch::Available()),
                         testing::PrintToStringParamName());

} // namespace
