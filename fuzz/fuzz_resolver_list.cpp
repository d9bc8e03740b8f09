// libFuzzer entry for the text form of a profile list: beyond "never crashes", a decoded list survives a
// round trip through its text form, and the byte and text entry points agree.
#include "model/fatal.h"
#include "model/json_form.h"
#include "model/resolver.h"
#include "model/resolver_list.h"

#include <QStringDecoder>

using namespace brivanta;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArrayView bytes(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const std::optional<std::vector<Resolver>> list = decodeJSON<std::vector<Resolver>>(bytes);

    // Keep a leading byte-order mark as a character: Qt's decoder drops it by default, so the text entry
    // point would see different bytes from the byte one (and the JSON parser skips one mark of its own).
    QStringDecoder utf8(
        QStringDecoder::Utf8, QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    const QString text = utf8.decode(bytes);
    if (!utf8.hasError()) {
        const std::optional<std::vector<Resolver>> fromText = resolversFromRawValue(text);
        if (fromText.has_value() != list.has_value() || (list && *fromText != *list))
            fatal("the byte and text decoders disagree");
    }

    if (!list)
        return 0;
    const QString encoded = rawValue(*list);
    const std::optional<std::vector<Resolver>> again = resolversFromRawValue(encoded);
    if (!again || *again != *list)
        fatal("a decoded list does not survive a round trip through its text form");
    for (std::size_t i = 0; i < list->size(); ++i)
        if (qHash((*list)[i]) != qHash((*again)[i]))
            fatal("a round-tripped profile hashes differently");
    return 0;
}
