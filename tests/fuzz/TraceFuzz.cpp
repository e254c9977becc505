// Timelines: whatever a file has, it is read to its end, and told and shown without harm.

#include "Input.h"
#include "tools/Follow.h"
#include "tools/Html.h"
#include "tools/Summary.h"

#include <sstream>

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::istringstream lines(std::string(reinterpret_cast<const char*>(data), size));
    TraceReader reader(lines);
    Summary summary;
    Html page;
    TraceEvent event;
    std::size_t events = 0;
    while (reader.next(event)) {
        ++events;
        summary.add(event);
        page.add(event);
        readable(event);
    }
    require(events + reader.broken() <= size, "more was read than there is");
    require(!summary.text(20).empty(), "nothing is told");
    const std::string text = page.text();
    const std::size_t script = text.find("<script>");
    require(text.find("</script>") == text.rfind("</script>") && script != std::string::npos,
            "a trace ends the script that it stands in");
    return 0;
}
