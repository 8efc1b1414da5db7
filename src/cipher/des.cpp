#include "seamrevision/des.h"

#include "cipher/bitslice.h"
#include "cipher/cbc.h"
#include "cipher/padding.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace
{

using namespace seamrevision::des;

const unsigned char *bytesOf(const std::string &text)
{
    return reinterpret_cast<const unsigned char *>(text.data());
}

bool haveBlockLength(const std::string &key, const std::string &iv)
{
    return key.size() == blockBytes && iv.size() == blockBytes;
}

} // namespace

bool DES::DESEncrypt(const std::string &key, const std::string &iv,
                     const std::vector<unsigned char> &in, std::vector<unsigned char> &out) const
{
    if (!haveBlockLength(key, iv)) {
        out.clear();
        return false;
    }
    const KeySchedule keys = keySchedule(bytesOf(key));
    const std::size_t wholeBlocks = in.size() / blockBytes;
    const std::size_t wholeBytes = wholeBlocks * blockBytes;
    const std::size_t restBytes = in.size() - wholeBytes;

    unsigned char lastBlock[blockBytes];
    std::copy_n(in.begin() + static_cast<std::ptrdiff_t>(wholeBytes), restBytes, lastBlock);
    appendPadding(lastBlock, restBytes);

    std::vector<unsigned char> result(paddedSize(in.size()));
    const Block chain
        = encryptCbc(keys, loadBlock(bytesOf(iv)), in.data(), result.data(), wholeBlocks);
    encryptCbc(keys, chain, lastBlock, result.data() + wholeBytes, 1);
    out.swap(result);
    return true;
}

bool DES::DESDecrypt(const std::string &key, const std::string &iv,
                     const std::vector<unsigned char> &in, std::vector<unsigned char> &out) const
{
    if (!haveBlockLength(key, iv) || in.empty() || in.size() % blockBytes != 0) {
        out.clear();
        return false;
    }
    const KeySchedule keys = keySchedule(bytesOf(key));
    const Block vector = loadBlock(bytesOf(iv));
    const std::size_t wholeBlocks = in.size() / blockBytes - 1;
    const std::size_t wholeBytes = wholeBlocks * blockBytes;

    // The last block first: it alone tells whether the rest is worth the work, and its length.
    unsigned char lastBlock[blockBytes];
    const Block chain = wholeBlocks == 0 ? vector : loadBlock(in.data() + wholeBytes - blockBytes);
    decryptCbc(keys, chain, in.data() + wholeBytes, lastBlock, 1);
    const std::size_t padding = paddingOf(lastBlock);
    if (padding == 0) {
        out.clear();
        return false;
    }

    std::vector<unsigned char> result(in.size() - padding);
    decryptCbcFor(wholeBlocks)(keys, vector, in.data(), result.data(), wholeBlocks);
    std::copy_n(lastBlock, blockBytes - padding,
                result.begin() + static_cast<std::ptrdiff_t>(wholeBytes));
    out.swap(result);
    return true;
}
