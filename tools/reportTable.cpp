// Prints docs/reports.md: every report the library can make, from the report
// registry (ui/core/reports.h).  A test compares the two.
#include <cstdio>

#include "core/reports.h"

int main() {
    std::puts("# Reports\n");
    std::puts("Every report is one call of the client's log callback with the level \"ERROR\", the module and");
    std::puts("site below, and the format with its arguments. Generated from `ui/core/reports.h` by");
    std::puts("`tools/reportTable.cpp`; a test keeps the two the same.\n");
    std::puts("| Module | Site | Format | Meaning |\n|---|---:|---|---|");
#define ROW(name, module, site, format, meaning) std::printf("| %s | %d | `%s` | %s |\n", module, site, format, meaning);
    UI32_REPORTS(ROW)
#undef ROW
    std::puts("\n## Caller lines of the stream reader\n");
    std::puts("A shortage report of the stream reader (\"streamInOps\" 64 or 65) names the place that read as");
    std::puts("source \"ui\" and one of these lines, so that a client learns which field of which decoder was");
    std::puts("missing, which the reader's own site cannot tell.\n");
    std::puts("| Line | Read |\n|---:|---|");
#define LINE(name, line, meaning) std::printf("| %d | %s |\n", line, meaning);
    UI32_READ_LINES(LINE)
#undef LINE
}
