#include "records/des.h"
#include "records/desbitslice.h"
#include "records/descbc.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#ifdef SEAMREVISION_HAVE_LIBCRYPTO
#include <openssl/evp.h>
#include <openssl/provider.h>
#endif

namespace
{

using namespace seamrevision;
using Bytes = std::vector<unsigned char>;

constexpr unsigned int seed = 20240517;
const std::string fileKey = "qalvetor";
const std::string otherVector("\x00\xff\x80\x01\x7f\x0a\x20\xfe", 8);

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
    std::generate(bytes.begin(), bytes.end(),
                  [&generator] { return static_cast<unsigned char>(generator()); });
    return bytes;
}

const unsigned char *bytesOf(const std::string &text)
{
    return reinterpret_cast<const unsigned char *>(text.data());
}

/// The lines of the known answers that have so many columns; "-" stands for no bytes.
std::vector<std::vector<Bytes>> knownAnswers(std::size_t columnCount)
{
    std::ifstream file(TEST_DATA_DIR "/des-known-answers.txt");
    std::vector<std::vector<Bytes>> answers;
    for (std::string line; std::getline(file, line);) {
        if (line.empty() || line.front() == '#')
            continue;
        std::istringstream text(line);
        std::vector<Bytes> columns;
        for (std::string column; text >> column;)
            columns.push_back(fromHex(column));
        if (columns.size() == columnCount)
            answers.push_back(columns);
    }
    return answers;
}

struct Implementation
{
    const char *name;
    des::DecryptCbc decrypt;
};

std::vector<Implementation> implementations()
{
    std::vector<Implementation> all
        = {{"plain", des::decryptCbc}, {"bitsliced", des::decryptCbcBitsliced}};
    if (const des::DecryptCbc avx2 = des::decryptCbcAvx2())
        all.push_back({"AVX2", avx2});
    return all;
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
        // The same block twice, since only the second one reaches a batch.
        cipher.insert(cipher.end(), answer[2].begin(), answer[2].end());
        for (const Implementation &implementation : implementations()) {
            Bytes plain(cipher.size());
            implementation.decrypt(keys, 0, cipher.data(), plain.data(), 2);
            for (std::size_t i = 0; i < plain.size(); ++i) {
                const unsigned int chained = i < 8 ? 0U : cipher[i - 8];
                ASSERT_EQ(plain[i] ^ chained, answer[1][i % 8]) << implementation.name << i;
            }
        }
    }
}

TEST(Des, PaddedMessagesAreTheKnownAnswersAlsoWithinOneVector)
{
    const auto answers = knownAnswers(2);
    ASSERT_EQ(answers.size(), 7U);
    for (const auto &answer : answers) {
        Bytes out = {1, 2, 3};
        EXPECT_TRUE(DES().DESEncrypt(fileKey, fileKey, answer[0], out));
        EXPECT_EQ(out, answer[1]);
        EXPECT_TRUE(DES().DESDecrypt(fileKey, fileKey, out, out));
        EXPECT_EQ(out, answer[0]);
        EXPECT_TRUE(DES().DESEncrypt(fileKey, fileKey, out, out));
        EXPECT_EQ(out, answer[1]);
    }
}

TEST(Des, EveryImplementationUndoesEncryptionAtAnyLengthAndAlignment)
{
    std::vector<std::size_t> blockCounts = {31, 32, 33, 64, 65, 66, 255, 256, 257, 258, 513};
    for (std::size_t count = 0; count <= 17; ++count)
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
        for (const Implementation &implementation : implementations()) {
            Bytes plain(size + 2, 0xa5);
            implementation.decrypt(keys, vector, cipher.data() + 1, plain.data() + 1, count);
            EXPECT_TRUE(std::equal(plain.begin() + 1, plain.end() - 1, message.begin() + 1))
                << implementation.name << ", " << count << " blocks, seed " << seed;
            EXPECT_TRUE(plain.front() == 0xa5 && plain.back() == 0xa5) << implementation.name;
        }
    }
}

TEST(Des, WrongLengthsGiveFalseAndNothing)
{
    struct Row
    {
        std::size_t key, vector, message;
        bool encrypts;
    };
    for (const Row &row : {Row{0, 8, 16, false}, Row{7, 8, 16, false}, Row{9, 8, 16, false},
                           Row{8, 0, 16, false}, Row{8, 7, 16, false}, Row{8, 16, 16, false},
                           Row{8, 8, 0, true}, Row{8, 8, 7, true}, Row{8, 8, 2047, true}}) {
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
    struct Row
    {
        const char *lastBlock;
        std::size_t padding; ///< 0 when it is none
    };
    const Row rows[] = {
        {"0102030405060701", 1}, {"0102030405060202", 2}, {"0808080808080808", 8},
        {"0707070707070707", 7}, {"0102030405060700", 0}, {"0102030405060709", 0},
        {"01020304050607ff", 0}, {"0102030405060302", 0}, {"0102030405020303", 0},
        {"0708080808080808", 0}, {"0000000000000000", 0}, {"0909090909090909", 0},
    };
    const des::KeySchedule keys = des::keySchedule(bytesOf(fileKey));
    for (const Row &row : rows) {
        for (const std::size_t blocksBefore : {0U, 2U, 300U}) {
            Bytes message = randomBytes(blocksBefore * des::blockBytes);
            const Bytes lastBlock = fromHex(row.lastBlock);
            message.insert(message.end(), lastBlock.begin(), lastBlock.end());
            Bytes cipher(message.size());
            des::encryptCbc(keys, 0, message.data(), cipher.data(), blocksBefore + 1);

            Bytes out = {1, 2, 3};
            const bool right = DES().DESDecrypt(fileKey, std::string(8, '\0'), cipher, out);
            EXPECT_EQ(right, row.padding != 0) << row.lastBlock;
            message.resize(right ? message.size() - row.padding : 0U);
            EXPECT_EQ(out, message) << row.lastBlock << " behind " << blocksBefore;
        }
    }
}

TEST(Des, AFlippedByteGarblesItsBlockAndTheSameByteOfTheNext)
{
    const Bytes message = randomBytes(8 * 8 - 1);
    Bytes cipher;
    ASSERT_TRUE(DES().DESEncrypt(fileKey, otherVector, message, cipher));
    for (std::size_t place = 0; place < cipher.size(); ++place) {
        Bytes damaged = cipher;
        damaged[place] ^= 0xffU;
        Bytes out;
        const bool taken = DES().DESDecrypt(fileKey, otherVector, damaged, out);
        EXPECT_TRUE(taken || (out.empty() && place + 16 >= cipher.size())) << place;
        for (std::size_t i = 0; i < std::min(out.size(), message.size()); ++i) {
            const unsigned int change = i == place + 8 ? 0xffU : 0U;
            EXPECT_TRUE(i / 8 == place / 8 || out[i] == (message[i] ^ change)) << place << i;
        }
    }
}

#ifdef SEAMREVISION_HAVE_LIBCRYPTO
TEST(Des, LibcryptoAgrees)
{
    OSSL_PROVIDER *const legacy = OSSL_PROVIDER_load(nullptr, "legacy");
    if (legacy == nullptr)
        GTEST_SKIP() << "libcrypto has no legacy provider here";
    EVP_CIPHER *const cipher = EVP_CIPHER_fetch(nullptr, "DES-CBC", nullptr);
    EVP_CIPHER_CTX *const context = EVP_CIPHER_CTX_new();
    for (std::size_t size = 0; size < 6000; size += 1 + size / 9) {
        const Bytes message = randomBytes(size);
        const Bytes keyBytes = randomBytes(8 + size % 3);
        const std::string key(keyBytes.begin(), keyBytes.begin() + 8);
        Bytes theirs(size + 8);
        int written = 0;
        int rest = 0;
        ASSERT_TRUE(
            EVP_EncryptInit_ex(context, cipher, nullptr, bytesOf(key), bytesOf(otherVector)));
        ASSERT_TRUE(EVP_EncryptUpdate(context, theirs.data(), &written, message.data(),
                                      static_cast<int>(size)));
        ASSERT_TRUE(EVP_EncryptFinal_ex(context, theirs.data() + written, &rest));
        theirs.resize(std::size_t(written) + std::size_t(rest));

        Bytes ours;
        ASSERT_TRUE(DES().DESEncrypt(key, otherVector, message, ours));
        ASSERT_EQ(ours, theirs) << size << " bytes, seed " << seed;
        ASSERT_TRUE(DES().DESDecrypt(key, otherVector, theirs, ours));
        ASSERT_EQ(ours, message) << size << " bytes, seed " << seed;
    }
    EVP_CIPHER_CTX_free(context);
    EVP_CIPHER_free(cipher);
    OSSL_PROVIDER_unload(legacy);
}
#endif
