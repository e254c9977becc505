// Links: what is read means the same when it is written and read again.

#include "Input.h"
#include "store/LinkTarget.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using sonolet::service::LinkTarget;
    const auto target = LinkTarget::parse({reinterpret_cast<const char*>(data), size});
    if (target) {
        const std::string text = target->asString();
        const auto again = LinkTarget::parse(text);
        require(again && again->type == target->type && again->id == target->id &&
                    again->user == target->user && again->offsetMs == target->offsetMs &&
                    again->asString() == text,
                "another link came back");
    }
    return 0;
}
