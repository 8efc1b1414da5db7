#include "cases.h"
#include "cipher/chains.h"
#include "figures.h"
#include "libcrypto.h"
#include <seamrevision/des.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

// The cipher of the coefficient files: on 9 MB, beside libcrypto's, where both sides make the
// memory of their output within the time, as whoever saves or loads a file does; and on many
// messages side by side, beside one after the other into the same memory.
namespace bench
{

namespace
{

namespace des = seamrevision::des;

Bytes randomBytes(std::size_t count)
{
    std::mt19937 random(1);
    Bytes bytes(count);
    for (unsigned char &byte : bytes)
        byte = static_cast<unsigned char>(random());
    return bytes;
}

bool cryptWithOurs(bool encrypts, const Bytes &in, Bytes &out)
{
    return encrypts ? DES().DESEncrypt(fileKey, fileKey, in, out)
                    : DES().DESDecrypt(fileKey, fileKey, in, out);
}

void crypt(benchmark::State &state, bool encrypts, const Figure &figure)
{
    const Bytes plaintext = randomBytes(isShortRun() ? 9 << 10 : 9 << 20);
    Bytes ciphertext;
    Bytes ours;
    Bytes theirs;
    cryptWithLibcrypto(true, plaintext, ciphertext);
    const Bytes &in = encrypts ? plaintext : ciphertext;
    if (!cryptWithOurs(encrypts, in, ours) || !cryptWithLibcrypto(encrypts, in, theirs)
        || ours != theirs) {
        fail(state, "the result is wrong");
        return;
    }
    const auto timed = [&](bool (*code)(bool, const Bytes &, Bytes &)) {
        return [&in, encrypts, code] {
            Bytes out;
            code(encrypts, in, out);
            benchmark::DoNotOptimize(out.data());
        };
    };
    report(state, figure, timeInTurns(timed(cryptWithOurs), timed(cryptWithLibcrypto)));
}

void registerLibcryptoCases()
{
    registerFigure("Figure4_DesEncrypt", [](benchmark::State &state) {
        crypt(state, true, {"4 DES encryption, 9 MB", 1.7, Figure::AtLeast});
    });
    registerFigure("Figure4_DesDecrypt", [](benchmark::State &state) {
        crypt(state, false, {"4 DES decryption, 9 MB", 4, Figure::AtLeast});
    });
}

/// As many times the same message, read anew for each chain, with room for the ciphertexts.
class ChainsOfOneMessage
{
public:
    ChainsOfOneMessage(const Bytes &message, std::size_t chainCount)
        : m_message(message)
        , m_ciphertexts(chainCount, Bytes(des::paddedSize(message.size())))
    {
    }

    void encrypt(const des::LaneKernel *kernel);
    bool areAll(const Bytes &ciphertext) const
    {
        return std::all_of(m_ciphertexts.begin(), m_ciphertexts.end(),
                           [&](const Bytes &bytes) { return bytes == ciphertext; });
    }

private:
    const Bytes &m_message;
    std::vector<Bytes> m_ciphertexts;
};

void ChainsOfOneMessage::encrypt(const des::LaneKernel *kernel)
{
    std::vector<des::Chain> chains;
    for (Bytes &ciphertext : m_ciphertexts) {
        const auto read
            = [next = m_message.data()](unsigned char *bytes, std::size_t count) mutable {
                  std::copy_n(next, count, bytes);
                  next += count;
              };
        chains.push_back({m_message.size(), read, ciphertext.data()});
    }
    const auto *const key = reinterpret_cast<const unsigned char *>(fileKey.data());
    des::encryptChains(des::keySchedule(key), des::loadBlock(key), chains, kernel);
}

/// Messages as large as the file of a partition of 240 x 180 pixels.
void encryptSideBySide(benchmark::State &state, std::size_t chainCount,
                       const des::LaneKernel *kernel, const Figure &figure)
{
    const Bytes message = randomBytes(isShortRun() ? 3 << 10 : 240 * 180 * 18);
    Bytes ciphertext;
    DES().DESEncrypt(fileKey, fileKey, message, ciphertext);
    ChainsOfOneMessage chains(message, chainCount);
    chains.encrypt(kernel);
    if (!chains.areAll(ciphertext)) {
        fail(state, "the result is wrong");
        return;
    }
    report(state, figure,
           timeInTurns([&] { chains.encrypt(kernel); }, [&] { chains.encrypt(nullptr); }));
}

void registerChains(const char *version, const des::LaneKernel *kernel, std::size_t chainCount,
                    double target)
{
    const std::string count = std::to_string(chainCount);
    const Figure figure{"4 DES, " + count + " chains with " + version + ", to one by one", target,
                        Figure::AtLeast};
    if (kernel) {
        registerFigure("Figure4_DesChains_" + count + version, [=](benchmark::State &state) {
            encryptSideBySide(state, chainCount, kernel, figure);
        });
    }
}

} // namespace

void registerCipherCases()
{
    if (haveLibcrypto())
        registerLibcryptoCases();
    registerChains("AVX2", des::avx2Lanes(), 12, 1.9);
    registerChains("AVX2", des::avx2Lanes(), 24, 3.6);
    registerChains("AVX2", des::avx2Lanes(), 32, 4.7);
    registerChains("AVX-512", des::avx512Lanes(), 24, 4.5);
    registerChains("AVX-512", des::avx512Lanes(), 48, 8);
    registerChains("AVX-512", des::avx512Lanes(), 64, 10);
}

} // namespace bench
