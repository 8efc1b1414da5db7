#include "cipher/bitslice.h"
#include "cipher/cbc.h"
#include "cipher/chains.h"
#include <seamrevision/des.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <numeric>
#include <random>
#include <sstream>

namespace
{

using namespace seamrevision;
using Bytes = std::vector<unsigned char>;

constexpr unsigned int seed = 20240517;
const std::string fileKey = "qalvetor";

Bytes fromHex(const std::string &hex)
{
    Bytes bytes;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
        bytes.push_back(static_cast<unsigned char>(std::stoi(hex.substr(i, 2), nullptr, 16)));
    return bytes;
}

Bytes randomBytes(std::size_t count)
{
    std::mt19937 generator(seed + static_cast<unsigned int>(count));
    Bytes bytes(count);
    for (unsigned char &byte : bytes)
        byte = static_cast<unsigned char>(generator());
    return bytes;
}

/// The lines of the known answers that have so many columns; "-" stands for no bytes.
std::vector<std::vector<Bytes>> knownAnswers(std::size_t columnCount)
{
    std::ifstream file(TEST_DATA_DIR "/des-known-answers.txt");
    std::vector<std::vector<Bytes>> answers;
    for (std::string line; std::getline(file, line);) {
        std::istringstream text(line);
        std::vector<Bytes> columns;
        for (std::string column; line.find('#') != 0 && text >> column;)
            columns.push_back(fromHex(column));
        if (columns.size() == columnCount)
            answers.push_back(columns);
    }
    return answers;
}

std::map<const char *, des::DecryptCbc> implementations()
{
    std::map<const char *, des::DecryptCbc> all{{"plain", des::decryptCbc},
                                                {"bitsliced", des::decryptCbcBitsliced}};
    if (const des::DecryptCbc avx2 = des::decryptCbcAvx2())
        all["AVX2"] = avx2;
    return all;
}

/// nullptr for one chain after the other, which is always there.
std::map<const char *, const des::LaneKernel *> kernels()
{
    std::map<const char *, const des::LaneKernel *> all{{"one by one", nullptr}};
    for (const auto &[name, kernel] :
         {std::pair("AVX2", des::avx2Lanes()), std::pair("AVX-512", des::avx512Lanes())}) {
        if (kernel)
            all[name] = kernel;
    }
    return all;
}

/// Enciphers messages as chains, from and to places one byte off. Empty where a byte beside a
/// ciphertext was written.
std::vector<Bytes> encryptTogether(const Bytes &key, const std::vector<Bytes> &messages,
                                   const des::LaneKernel *kernel)
{
    std::vector<des::Chain> chains;
    std::vector<Bytes> out;
    out.reserve(messages.size());
    for (const Bytes &message : messages)
        out.emplace_back(des::paddedSize(message.size()) + 2, 0xa5);
    for (std::size_t i = 0; i < messages.size(); ++i) {
        const auto read = [next = messages[i].begin()](unsigned char *bytes, auto count) mutable {
            std::copy_n(next, count, bytes);
            next += static_cast<std::ptrdiff_t>(count);
        };
        chains.push_back({messages[i].size(), read, out[i].data() + 1});
    }
    des::encryptChains(des::keySchedule(key.data()), des::loadBlock(key.data()), chains, kernel);
    for (Bytes &bytes : out) {
        const bool keptInside = bytes.front() == 0xa5 && bytes.back() == 0xa5;
        bytes = keptInside ? Bytes(bytes.begin() + 1, bytes.end() - 1) : Bytes();
    }
    return out;
}

} // namespace

TEST(Des, SingleBlocksAreThePublishedAnswers)
{
    const auto answers = knownAnswers(3);
    ASSERT_EQ(answers.size(), 69U);
    for (const auto &answer : answers) {
        const des::KeySchedule keys = des::keySchedule(answer[0].data());
        Bytes cipher(des::blockBytes);
        des::encryptCbc(keys, 0, answer[1].data(), cipher.data(), 1);
        EXPECT_EQ(cipher, answer[2]);
        // Chains begin with their key here, which a block without a vector takes off again.
        Bytes block = answer[1];
        std::transform(block.begin(), block.end(), answer[0].begin(), block.begin(),
                       [](unsigned int a, unsigned int b) { return a ^ b; });
        for (const auto &[name, kernel] : kernels()) {
            for (const Bytes &out :
                 encryptTogether(answer[0], std::vector<Bytes>(70, block), kernel))
                ASSERT_TRUE(std::equal(cipher.begin(), cipher.end(), out.begin())) << name;
        }
        // The same block twice, since only the second one reaches a batch.
        cipher.insert(cipher.end(), answer[2].begin(), answer[2].end());
        for (const auto &[name, decrypt] : implementations()) {
            Bytes plain(cipher.size());
            decrypt(keys, 0, cipher.data(), plain.data(), 2);
            for (std::size_t i = 0; i < plain.size(); ++i) {
                const unsigned int chained = i < 8 ? 0U : cipher[i - 8];
                ASSERT_EQ(plain[i] ^ chained, answer[1][i % 8]) << name << i;
            }
        }
    }
}

TEST(Des, PaddedMessagesAreTheKnownAnswersAlsoWithinOneVector)
{
    const auto answers = knownAnswers(2);
    ASSERT_EQ(answers.size(), 7U);
    for (const auto &answer : answers) {
        Bytes out = answer[0];
        EXPECT_TRUE(DES().DESEncrypt(fileKey, fileKey, out, out));
        EXPECT_EQ(out, answer[1]);
        EXPECT_TRUE(DES().DESDecrypt(fileKey, fileKey, out, out));
        EXPECT_EQ(out, answer[0]);
    }
}

TEST(Des, EveryImplementationUndoesEncryptionAtAnyLengthAndAlignment)
{
    std::vector<std::size_t> blockCounts(18);
    std::iota(blockCounts.begin(), blockCounts.end(), 0);
    for (const std::size_t count : {31, 32, 33, 64, 65, 66, 255, 256, 257, 258, 513})
        blockCounts.push_back(count);
    const des::KeySchedule keys = des::keySchedule(randomBytes(8).data());
    const des::Block vector = des::loadBlock(randomBytes(9).data());
    for (const std::size_t count : blockCounts) {
        // One byte off at both ends, and one behind which nobody may touch.
        const std::size_t size = count * des::blockBytes;
        const Bytes message = randomBytes(size + 1);
        Bytes cipher(size + 1);
        const des::Block last
            = des::encryptCbc(keys, vector, message.data() + 1, cipher.data() + 1, count);
        EXPECT_EQ(last, count == 0 ? vector : des::loadBlock(cipher.data() + size - 7));
        for (const auto &[name, decrypt] : implementations()) {
            Bytes plain(size + 2, 0xa5);
            decrypt(keys, vector, cipher.data() + 1, plain.data() + 1, count);
            EXPECT_TRUE(std::equal(plain.begin() + 1, plain.end() - 1, message.begin() + 1))
                << name << ", " << count << " blocks, seed " << seed;
            EXPECT_TRUE(plain.front() == 0xa5 && plain.back() == 0xa5) << name;
        }
    }
}

TEST(Des, ChainsOfAnyNumberAndLengthsAreTheMessagesEncipheredOneByOne)
{
    const std::size_t piece = des::pieceBlocks * des::blockBytes;
    const struct
    {
        const char *name;
        std::size_t (*sizeOf)(std::size_t chain);
    } rows[] = {
        {"0 to 69 blocks", [](std::size_t chain) { return chain * 31 % 70 * 8; }},
        {"0 to 69 bytes", [](std::size_t chain) { return chain * 31 % 70; }},
        {"all alike", [](std::size_t) { return piece + 7; }},
        {"around pieces", [](std::size_t chain) { return chain % 4 * piece + chain % 10; }},
        {"one that is longer", [](std::size_t chain) { return chain == 1 ? 5 * piece : 200; }},
    };
    const Bytes key(fileKey.begin(), fileKey.end());
    for (const auto &row : rows) {
        std::vector<Bytes> messages;
        std::vector<Bytes> expected;
        for (std::size_t chain = 1; chain <= 70; ++chain) {
            messages.push_back(randomBytes(row.sizeOf(chain) + chain));
            messages.back().resize(row.sizeOf(chain));
            DES().DESEncrypt(fileKey, fileKey, messages.back(), expected.emplace_back());
        }
        for (; !messages.empty(); messages.pop_back(), expected.pop_back()) {
            for (const auto &[name, kernel] : kernels()) {
                ASSERT_EQ(encryptTogether(key, messages, kernel), expected)
                    << name << ", " << messages.size() << " chains, " << row.name;
            }
        }
    }
}

TEST(Des, WrongLengthsGiveFalseAndNothing)
{
    const struct
    {
        std::size_t key, vector, message;
        bool encrypts;
    } rows[] = {
        {0, 8, 16, false}, {7, 8, 16, false}, {9, 8, 16, false},
        {8, 0, 16, false}, {8, 7, 16, false}, {8, 16, 16, false},
        {8, 8, 0, true},   {8, 8, 7, true},   {8, 8, 2047, true},
    };
    for (const auto &row : rows) {
        const std::string key(row.key, 'k');
        const std::string vector(row.vector, 'v');
        Bytes out = {1, 2, 3};
        EXPECT_FALSE(DES().DESDecrypt(key, vector, Bytes(row.message), out));
        EXPECT_TRUE(out.empty());
        out = {1, 2, 3};
        EXPECT_EQ(DES().DESEncrypt(key, vector, Bytes(row.message), out), row.encrypts);
        EXPECT_EQ(out.empty(), !row.encrypts);
    }
}

TEST(Des, OnlyRightPaddingIsTaken)
{
    const struct
    {
        const char *lastBlock;
        std::size_t padding; ///< 0 when it is none
    } rows[] = {
        {"0102030405060701", 1}, {"0102030405060202", 2}, {"0808080808080808", 8},
        {"0707070707070707", 7}, {"0102030405060700", 0}, {"0102030405060709", 0},
        {"01020304050607ff", 0}, {"0102030405060302", 0}, {"0102030405020303", 0},
        {"0708080808080808", 0}, {"0000000000000000", 0}, {"0909090909090909", 0},
    };
    const des::KeySchedule keys = des::keySchedule(Bytes(fileKey.begin(), fileKey.end()).data());
    for (const auto &row : rows) {
        for (const std::size_t blocksBefore : {0U, 2U, 300U}) {
            Bytes message = randomBytes(blocksBefore * des::blockBytes);
            const Bytes lastBlock = fromHex(row.lastBlock);
            message.insert(message.end(), lastBlock.begin(), lastBlock.end());
            Bytes cipher(message.size());
            des::encryptCbc(keys, 0, message.data(), cipher.data(), blocksBefore + 1);

            Bytes out = {1, 2, 3};
            const bool isRight = DES().DESDecrypt(fileKey, std::string(8, '\0'), cipher, out);
            EXPECT_EQ(isRight, row.padding != 0) << row.lastBlock;
            message.resize(isRight ? message.size() - row.padding : 0U);
            EXPECT_EQ(out, message) << row.lastBlock << " behind " << blocksBefore;
        }
    }
}
