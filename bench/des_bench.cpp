#include "records/des.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#ifdef SEAMREVISION_HAVE_LIBCRYPTO
#include <openssl/evp.h>
#include <openssl/provider.h>
#endif

// The cipher of the coefficient files on 9 MB, beside libcrypto's. Both sides make the memory of
// their output within the time, as whoever saves or loads a file does.

namespace
{

using Bytes = std::vector<unsigned char>;

const std::string fileKey = "qalvetor";

const Bytes &plainText()
{
    static const Bytes text = [] {
        std::mt19937 generator(1);
        Bytes bytes(9 << 20);
        for (unsigned char &byte : bytes)
            byte = static_cast<unsigned char>(generator());
        return bytes;
    }();
    return text;
}

const Bytes &cipherText()
{
    static const Bytes text = [] {
        Bytes bytes;
        DES().DESEncrypt(fileKey, fileKey, plainText(), bytes);
        return bytes;
    }();
    return text;
}

/// Times code from one text to another after a check that it gets there.
template <typename Code>
void timeCode(benchmark::State &state, Code code, const Bytes &from, const Bytes &to)
{
    Bytes checked;
    if (!code(from, checked) || checked != to) {
        state.SkipWithError("the result is wrong, or the cipher is not to be had");
        return;
    }
    for (auto unused : state) {
        static_cast<void>(unused);
        Bytes out;
        code(from, out);
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(from.size()));
}

void encryptOurs(benchmark::State &state)
{
    const auto encrypt
        = [](const Bytes &in, Bytes &out) { return DES().DESEncrypt(fileKey, fileKey, in, out); };
    timeCode(state, encrypt, plainText(), cipherText());
}

void decryptOurs(benchmark::State &state)
{
    const auto decrypt
        = [](const Bytes &in, Bytes &out) { return DES().DESDecrypt(fileKey, fileKey, in, out); };
    timeCode(state, decrypt, cipherText(), plainText());
}

#ifdef SEAMREVISION_HAVE_LIBCRYPTO
bool cryptWithLibcrypto(bool encrypts, const Bytes &in, Bytes &out)
{
    // Named, the legacy provider alone would be there; the default one is wanted as well.
    static const bool loaded = OSSL_PROVIDER_load(nullptr, "legacy") != nullptr
        && OSSL_PROVIDER_load(nullptr, "default") != nullptr;
    static EVP_CIPHER *const cipher = EVP_CIPHER_fetch(nullptr, "DES-CBC", nullptr);
    if (!loaded || cipher == nullptr)
        return false;
    const auto *const key = reinterpret_cast<const unsigned char *>(fileKey.data());
    EVP_CIPHER_CTX *const context = EVP_CIPHER_CTX_new();
    int written = 0;
    int rest = 0;
    out.resize(in.size() + 8);
    const bool done = EVP_CipherInit_ex(context, cipher, nullptr, key, key, encrypts ? 1 : 0) == 1
        && EVP_CipherUpdate(context, out.data(), &written, in.data(), static_cast<int>(in.size()))
            == 1
        && EVP_CipherFinal_ex(context, out.data() + written, &rest) == 1;
    EVP_CIPHER_CTX_free(context);
    out.resize(done ? static_cast<std::size_t>(written + rest) : 0);
    return done;
}

void encryptLibcrypto(benchmark::State &state)
{
    const auto encrypt
        = [](const Bytes &in, Bytes &out) { return cryptWithLibcrypto(true, in, out); };
    timeCode(state, encrypt, plainText(), cipherText());
}

void decryptLibcrypto(benchmark::State &state)
{
    const auto decrypt
        = [](const Bytes &in, Bytes &out) { return cryptWithLibcrypto(false, in, out); };
    timeCode(state, decrypt, cipherText(), plainText());
}
#endif

} // namespace

BENCHMARK(encryptOurs)->Name("Figure4_DesEncrypt/ours")->Unit(benchmark::kMillisecond);
#ifdef SEAMREVISION_HAVE_LIBCRYPTO
BENCHMARK(encryptLibcrypto)->Name("Figure4_DesEncrypt/libcrypto")->Unit(benchmark::kMillisecond);
#endif
BENCHMARK(decryptOurs)->Name("Figure4_DesDecrypt/ours")->Unit(benchmark::kMillisecond);
#ifdef SEAMREVISION_HAVE_LIBCRYPTO
BENCHMARK(decryptLibcrypto)->Name("Figure4_DesDecrypt/libcrypto")->Unit(benchmark::kMillisecond);
#endif
