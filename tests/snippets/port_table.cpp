#include <cstdio>
#include <string>
#include <vector>

#include "frameutil/table.h"

using namespace FrameUtil;

// [fill]
// Columns first, then rows of empty cells, then the cells: column before row.
static void Fill(CBMSTableObject& ports) {
    ports.AddCol("name");
    ports.AddCol("speed");
    ports.AddCol("admin");
    ports.AddRow(3);
    const char* const names[] = {"eth2", "eth0", "eth1"};
    for (int row = 0; row < ports.GetRowCount(); ++row) {
        ports.SetCellValue("name", row, TEValue(names[row]));
        ports.SetCellValue("speed", row, TEValue(row == 0 ? 10000 : 1000));
        ports.SetCellValue("admin", row, TEValue("up"));
    }
}
// [/fill]

// [sort]
static void SortByName(CBMSTableObject& ports) {
    std::vector<int> keys{ports.FindCol("name")};
    ports.Sort(keys, 0);
}
// [/sort]

// [walk]
static void Print(CFrmTableObject& ports) {
    std::string name;
    int speed = 0;
    while (ports() != nullptr) {  // the next row
        ports >> name >> speed;   // its first two cells
        std::printf("%s %d\n", name.c_str(), speed);
    }
}
// [/walk]

// [column]
static std::string FirstAdmin(CFrmTableObject& ports) {
    std::string admin;
    if (ports() != nullptr) {
        ports["admin"] >> admin;
    }
    return admin;
}
// [/column]

// [compare]
// What changed between what is configured and what the element says.
static void PrintChanges(CBMSTableObject& configured, CBMSTableObject& reported) {
    std::vector<int> key{configured.FindCol("name")};
    std::vector<int> cols{configured.FindCol("speed"), configured.FindCol("admin")};
    for (int row = 0; row < configured.GetRowCount(); ++row) {
        const int found = reported.FindRowLocation(&configured, row, 0, key, key);
        std::string changed;
        if (found < 0) {
            std::printf("%s is gone\n", configured.GetCellValue("name", row).As_TEString().c_str());
        } else if (reported.DetectIfModified(&configured, row, found, cols, cols, true, changed)) {
            std::printf("%s differs in %s\n",
                        configured.GetCellValue("name", row).As_TEString().c_str(),
                        changed.c_str());
        }
    }
}
// [/compare]

int main() {
    CFrmTableObject ports;
    Fill(ports);
    SortByName(ports);
    Print(ports);
    std::printf("%s\n", FirstAdmin(ports).c_str());

    CFrmTableObject reported(ports);
    reported.SetCellValue("speed", 0, TEValue(100));
    reported.SetCellValue("admin", 0, TEValue("down"));
    reported.DeleteRow(2, 1);
    PrintChanges(ports, reported);
    return 0;
}
