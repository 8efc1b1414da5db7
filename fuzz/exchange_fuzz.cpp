#include "exchange/layoutfile.h"
#include "exchange/npyheader.h"
#include "exchange/npyreader.h"
#include "exchange/textreader.h"

#include <QBuffer>

#include <cstdint>

using namespace seamrevise;

/// Hands any bytes to the readers of foreign files: of layouts, and of dumps if they begin with an
/// end of line, else of arrays.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    QByteArray bytes(reinterpret_cast<const char *>(data), static_cast<int>(size));
    ImportLayout layout;
    readLayout(bytes, layout);

    Coefficients coefficients;
    const WantedCoefficients wanted{2, 3, {}};
    const bool isText = bytes.startsWith('\r') || bytes.startsWith('\n');
    if (!isText)
        bytes.prepend(npyMagic); // found by nobody by chance
    QBuffer file(&bytes);
    file.open(QIODevice::ReadOnly);
    isText ? readText(file, wanted, coefficients) : readNpy(file, wanted, coefficients);
    return 0;
}
