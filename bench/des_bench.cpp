#include "cases.h"
#include "figures.h"
#include <seamrevision/des.h>

#include <random>
#include <string>
#include <vector>

#ifdef SEAMREVISION_HAVE_LIBCRYPTO
#include <openssl/evp.h>
#include <openssl/provider.h>
#endif

// The cipher of the coefficient files on 9 MB, beside libcrypto's. Both sides make the memory of
// their output within the time, as whoever saves or loads a file does.
namespace bench
{

#ifdef SEAMREVISION_HAVE_LIBCRYPTO

namespace
{

using Bytes = std::vector<unsigned char>;

const std::string fileKey = "qalvetor";

bool cryptWithLibcrypto(bool encrypts, const Bytes &in, Bytes &out)
{
    // Named, the legacy provider alone would be there; the default one is wanted as well.
    static const bool loaded = OSSL_PROVIDER_load(nullptr, "legacy") != nullptr
        && OSSL_PROVIDER_load(nullptr, "default") != nullptr;
    static EVP_CIPHER *const cipher = EVP_CIPHER_fetch(nullptr, "DES-CBC", nullptr);
    if (!loaded || !cipher)
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

bool cryptWithOurs(bool encrypts, const Bytes &in, Bytes &out)
{
    return encrypts ? DES().DESEncrypt(fileKey, fileKey, in, out)
                    : DES().DESDecrypt(fileKey, fileKey, in, out);
}

void crypt(benchmark::State &state, bool encrypts, const Figure &figure)
{
    std::mt19937 random(1);
    Bytes plaintext(isShortRun() ? 9 << 10 : 9 << 20);
    for (unsigned char &byte : plaintext)
        byte = static_cast<unsigned char>(random());
    Bytes ciphertext;
    Bytes ours;
    Bytes theirs;
    if (!cryptWithLibcrypto(true, plaintext, ciphertext)) {
        state.SkipWithError("libcrypto has no DES here");
        return;
    }
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

} // namespace

void registerCipherCases()
{
    registerFigure("Figure4_DesEncrypt", [](benchmark::State &state) {
        crypt(state, true, {"4 DES encryption, 9 MB", 1.5, Figure::AtLeast});
    });
    registerFigure("Figure4_DesDecrypt", [](benchmark::State &state) {
        crypt(state, false, {"4 DES decryption, 9 MB", 4, Figure::AtLeast});
    });
}

#else

/// Without the other cipher there is nothing to stand beside.
void registerCipherCases() {}

#endif

} // namespace bench
