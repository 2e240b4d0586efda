#include "pod/pod_check.h"
#include "pod/pod_crc.h"
#include "pod/pod_directory.h"

#include "pod_writer.h"
#include "temp_game.h"

#include <gtest/gtest.h>

using namespace korvel;
using korvel::testing::PodWriter;
using korvel::testing::putInt32;
using korvel::testing::TempDrive;

namespace {

const std::string kArchive = "C:\\Game\\CHECK.POD";

PodWriter sample() {
    PodWriter pod;
    pod.comment("Sample").add("DATA\\A.BIN", "alpha").add("B.BIN", std::string(300, 'b'));
    return pod;
}

// Writes the checksums a POD2 archive carries: every record's over its data, then the header's.
std::string sealed(std::string bytes) {
    const auto count = static_cast<size_t>(korvel::testing::getInt32(bytes, 88));
    for (size_t i = 0; i < count; ++i) {
        const size_t record = 96 + 20 * i;
        const auto size = static_cast<size_t>(korvel::testing::getInt32(bytes, record + 4));
        const auto start = static_cast<size_t>(korvel::testing::getInt32(bytes, record + 8));
        putInt32(bytes, record + 16, static_cast<std::int32_t>(podCrc(bytes.data() + start, size)));
    }
    putInt32(bytes, 4, static_cast<std::int32_t>(podCrc(bytes.data() + 8, bytes.size() - 8)));
    return bytes;
}

std::string keys(const ArchiveCheck& check) {
    std::string out;
    for (const CheckFinding& finding : check.findings)
        out += (out.empty() ? "" : ",") + checkProblemKey(finding.problem).toStdString();
    return out.empty() ? "fine" : out;
}

} // namespace

TEST(ArchiveCheck, reportsEveryKindOfDamageWithItsOwnText) {
    PodWriter pastTheEnd = sample();
    pastTheEnd.add({"LONG.BIN", "xy", 5000, std::nullopt});
    std::string headerSum = sealed(sample().pod2());
    headerSum[4] = static_cast<char>(headerSum[4] ^ 1);
    std::string entrySum = sample().pod2();
    entrySum[96 + 20 + 16] = 1; // B.BIN's record, sealed again below except for that field
    entrySum = sealed(entrySum);
    entrySum[96 + 20 + 16] = static_cast<char>(entrySum[96 + 20 + 16] ^ 0x40);
    putInt32(entrySum, 4, static_cast<std::int32_t>(podCrc(entrySum.data() + 8, entrySum.size() - 8)));
    std::string dataByte = sealed(sample().pod2());
    dataByte.back() = 'X';
    const struct {
        const char* name;
        std::string bytes; // nothing written when empty
        const char* keys;
        const char* text; // a part of the summary
    } rows[] = {
        {"sound POD1", sample().pod1(), "fine", "Fine"},
        {"sound POD2", sealed(sample().pod2()), "fine", "Fine"},
        {"missing", std::string(), "not-found", "Not found"},
        {"directory past the file", sample().count(100000).pod1(), "damaged", "unable to read this POD"},
        {"POD3", sample().magic("POD3").pod2(), "pod3", "POD3"},
        {"entry past the end", pastTheEnd.pod1(), "truncated",
         "Truncated: LONG.BIN ends at byte 5509 of a 511-byte file"},
        {"escaping names", sample().add("..\\EVIL.BIN", "e").add("C:\\ABS.BIN", "a").pod1(), "unsafe-names",
         "Unsafe entry names: ..\\EVIL.BIN, C:\\ABS.BIN"},
        {"header checksum only", headerSum, "wrong-checksum", "Wrong checksum: header"},
        {"one entry's checksum", entrySum, "wrong-checksum", "Wrong checksum: entries B.BIN"},
        {"a changed data byte", dataByte, "wrong-checksum", "Wrong checksum: header; entries B.BIN"},
        {"unsealed POD2 with an unsafe name", sample().add("A\\..\\..\\X", "x").pod2(), "unsafe-names,wrong-checksum",
         "Unsafe entry names: A\\..\\..\\X; Wrong checksum: header; entries DATA\\A.BIN, B.BIN"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        TempDrive drive;
        if (!row.bytes.empty())
            drive.write(kArchive, row.bytes);
        const ArchiveCheck check = checkArchive(drive.files(), kArchive);
        EXPECT_EQ(keys(check), row.keys);
        EXPECT_NE(check.summary().indexOf(QString::fromLatin1(row.text)), -1) << check.summary().toStdString();
        EXPECT_EQ(check.fine(), std::string(row.keys) == "fine");
    }
}

TEST(ArchiveCheck, namesTheFirstFewBadEntriesAndCountsTheRest) {
    TempDrive drive;
    PodWriter pod;
    for (int i = 0; i < 8; ++i)
        pod.add("..\\E" + std::to_string(i), "e");
    drive.write(kArchive, pod.pod1());
    EXPECT_EQ(checkArchive(drive.files(), kArchive).summary(),
              "Unsafe entry names: ..\\E0, ..\\E1, ..\\E2, ..\\E3, ..\\E4 and 3 more");
}
