#include "libcrypto.h"

#include <QDir>
#include <QFile>

#include <benchmark/benchmark.h>

#ifdef SEAMREVISION_HAVE_LIBCRYPTO
#include <openssl/evp.h>
#include <openssl/provider.h>
#endif

namespace bench
{

#ifdef SEAMREVISION_HAVE_LIBCRYPTO

bool haveLibcrypto()
{
    Bytes out;
    return cryptWithLibcrypto(true, {}, out);
}

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

#else

bool haveLibcrypto()
{
    return false;
}

bool cryptWithLibcrypto(bool, const Bytes &, Bytes &)
{
    return false;
}

#endif

std::vector<Bytes> plaintextsIn(const QString &directory)
{
    std::vector<Bytes> plaintexts;
    for (const QFileInfo &info : QDir(directory).entryInfoList(QDir::Files)) {
        QFile file(info.filePath());
        file.open(QIODevice::ReadOnly);
        const QByteArray content = file.readAll();
        plaintexts.emplace_back();
        cryptWithLibcrypto(false, Bytes(content.begin(), content.end()), plaintexts.back());
    }
    return plaintexts;
}

void encryptOneByOne(const std::vector<Bytes> &plaintexts)
{
    for (const Bytes &plaintext : plaintexts) {
        Bytes ciphertext;
        cryptWithLibcrypto(true, plaintext, ciphertext);
        benchmark::DoNotOptimize(ciphertext.data());
    }
}

} // namespace bench
