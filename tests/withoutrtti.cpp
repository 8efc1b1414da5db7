#include "withoutrtti.h"

namespace
{

class CountingSender : public PartitionMerge
{
public:
    explicit CountingSender(int &sent)
        : m_sent(sent)
    {
    }

protected:
    ST_ReviseResult sendResult(enum_ErrCodeType code, const QString &text,
                               ST_ReviseResult &result) override
    {
        ++m_sent;
        return PartitionMerge::sendResult(code, text, result);
    }

private:
    int &m_sent;
};

} // namespace

std::unique_ptr<PartitionMerge> engineWithoutRtti(int &sent)
{
    return std::make_unique<CountingSender>(sent);
}
