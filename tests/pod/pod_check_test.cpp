#include "pod/pod_check.h"
#include "pod/pod_crc.h"
#include "pod/pod_directory.h"

#include "pod_writer.h"
#include "temp_game.h"

#include <gtest/gtest.h>

#include <functional>

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
    const struct {
        const char* name;
        std::function<std::string()> bytes; // nothing written when empty
        const char* keys;
        const char* text; // a part of the summary
    } rows[] = {
        {"sound POD1", [] { return sample().pod1(); }, "fine", "Fine"},
        {"sound POD2", [] { return sealed(sample().pod2()); }, "fine", "Fine"},
        {"missing", [] { return std::string(); }, "not-found", "Not found"},
        {"directory past the file", [] { return sample().count(100000).pod1(); }, "damaged", "unable to read this POD"},
        {"POD3", [] { return sample().magic("POD3").pod2(); }, "pod3", "POD3"},
        {"entry past the end",
         [] {
             PodWriter pod = sample();
             pod.add({"LONG.BIN", "xy", 5000, std::nullopt});
             return pod.pod1();
         },
         "truncated", "Truncated: LONG.BIN ends at byte 5509 of a 511-byte file"},
        {"escaping names", [] { return sample().add("..\\EVIL.BIN", "e").add("C:\\ABS.BIN", "a").pod1(); },
         "unsafe-names", "Unsafe entry names: ..\\EVIL.BIN, C:\\ABS.BIN"},
        {"header checksum only",
         [] {
             std::string bytes = sealed(sample().pod2());
             bytes[4] = static_cast<char>(bytes[4] ^ 1);
             return bytes;
         },
         "wrong-checksum", "Wrong checksum: header"},
        {"one entry's checksum",
         [] {
             std::string bytes = sample().pod2();
             bytes[96 + 20 + 16] = 1; // B.BIN's record, sealed again below except for that field
             std::string good = sealed(bytes);
             good[96 + 20 + 16] = static_cast<char>(good[96 + 20 + 16] ^ 0x40);
             putInt32(good, 4, static_cast<std::int32_t>(podCrc(good.data() + 8, good.size() - 8)));
             return good;
         },
         "wrong-checksum", "Wrong checksum: entries B.BIN"},
        {"a changed data byte",
         [] {
             std::string bytes = sealed(sample().pod2());
             bytes[bytes.size() - 1] = 'X';
             return bytes;
         },
         "wrong-checksum", "Wrong checksum: header; entries B.BIN"},
        {"unsealed POD2 with an unsafe name", [] { return sample().add("A\\..\\..\\X", "x").pod2(); },
         "unsafe-names,wrong-checksum",
         "Unsafe entry names: A\\..\\..\\X; Wrong checksum: header; entries DATA\\A.BIN, B.BIN"},
    };
    for (const auto& row : rows) {
        TempDrive drive;
        const std::string bytes = row.bytes();
        if (!bytes.empty())
            drive.write(kArchive, bytes);
        const ArchiveCheck check = checkArchive(drive.files(), kArchive);
        EXPECT_EQ(keys(check), row.keys) << row.name;
        EXPECT_NE(check.summary().indexOf(QString::fromLatin1(row.text)), -1)
            << row.name << ": " << check.summary().toStdString();
        EXPECT_EQ(check.fine(), std::string(row.keys) == "fine") << row.name;
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
