// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Tests/Platform/Core/PropertyLists/BinaryPropertyList.h"
#include "Tests/Support/TestProgram.h"

#include <QTest>

#include <array>
#include <random>
#include <vector>

using platform::propertyListFromData;
using platform::propertyListToData;

namespace {

constexpr auto mutations = 30000; // of each seed; the same ones in every run

QByteArray xmlSeed()
{
    return R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
<dict>
	<key>bundleids</key>
	<array>
		<string>com.example.Player</string>
		<string>a &lt;&#x1F3B9;&gt; <![CDATA[<b>]]><!-- c --></string>
	</array>
	<key>keys</key>
	<dict>
		<key>Play &amp; Pause</key>
		<dict>
			<key>keycode</key><integer>-49</integer>
			<key>modifiers</key><integer>18446744073709551615</integer>
			<key>when</key><date>2026-01-31T23:59:59Z</date>
			<key>speed</key><real>-1.5e300</real>
			<key>icon</key><data>AAECAwQFBgc=</data>
			<key>on</key><true/><key>off</key><false/>
			<key>none</key><array/><key>nothing</key><dict/>
		</dict>
	</dict>
</dict>
</plist>
)";
}

QByteArray binarySeed()
{
    const auto hex = [](const char *digits) { return QByteArray::fromHex(digits); };
    BinaryPropertyList list;
    list.offsetSize = 2;
    list.objects = {
        list.dictionary({1, 2, 3, 4, 5, 6}),
        BinaryPropertyList::text("bundleids"),
        BinaryPropertyList::text("keys"),
        BinaryPropertyList::text("a key with more than fifteen letters"),
        list.container({7, 8, 9, 9, 9}),
        list.dictionary({1, 2, 10, 11}),
        list.container({4, 4, 12, 13, 14, 15, 16, 17, 18, 19}),
        hex("6320ACD83CDFB9"),
        hex("43000102"),
        list.container({}),
        hex("13FFFFFFFFFFFFFFFB"),
        hex("140000000000000000FFFFFFFFFFFFFFFF"),
        hex("223F000000"),
        hex("23BFE0000000000000"),
        hex("3341C6F3F5C0000000"),
        hex("08"),
        hex("09"),
        hex("8107FF"),
        hex("1101FF"),
        list.dictionary({}),
    };
    return list.data();
}

class Mutator {
public:
    // Changes the data in one to eight places.
    QByteArray mutate(QByteArray data)
    {
        for (auto left = below(8) + 1; left > 0; --left) {
            change(data);
        }
        return data;
    }

private:
    int below(int bound)
    {
        return static_cast<int>(m_numbers() % static_cast<unsigned>(std::max(bound, 1)));
    }

    void change(QByteArray &data)
    {
        static const std::array<QByteArray, 28> pieces{"<",
                                                       ">",
                                                       "&",
                                                       ";",
                                                       "/>",
                                                       "</",
                                                       "<!--",
                                                       "-->",
                                                       "<![CDATA[",
                                                       "]]>",
                                                       "<?",
                                                       "?>",
                                                       "\"",
                                                       "<dict>",
                                                       "</dict>",
                                                       "<array>",
                                                       "</array>",
                                                       "<key>",
                                                       "</key>",
                                                       "<string/>",
                                                       "&#0;",
                                                       "&#x10FFFF;",
                                                       "-",
                                                       "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF",
                                                       "\x7F\xFF\xFF\xFF",
                                                       QByteArray(8, '\0'),
                                                       QByteArray("\xDF\x13"),
                                                       QByteArray("\xA1\0", 2)};
        const auto size = static_cast<int>(data.size());
        const auto at = below(size);
        switch (below(8)) {
        case 0:
            data[at] = static_cast<char>(data.at(at) ^ 1 << below(8));
            break;
        case 1:
            data[at] = static_cast<char>(below(256));
            break;
        case 2:
            data.remove(at, below(16) + 1);
            break;
        case 3:
            data.insert(at, data.mid(below(size), below(64)));
            break;
        case 4:
            data.insert(at, pieces.at(static_cast<std::size_t>(below(pieces.size()))));
            break;
        case 5: {
            const auto &piece = pieces.at(static_cast<std::size_t>(below(pieces.size())));
            data.replace(at, piece.size(), piece);
            break;
        }
        case 6: // in a binary list: table and trailer
            data[size - 1 - below(std::min(size, 80))] = static_cast<char>(below(256));
            break;
        default:
            if (below(8) == 0) {
                data.truncate(at);
            }
        }
        if (data.isEmpty()) {
            data = "<";
        }
    }

    std::mt19937 m_numbers{20260131};
};

} // namespace

// Whatever the bytes: reading ends, touches no memory that is not its own (AddressSanitizer
// watches), and what was read can be written and read again.
class PropertyListFuzzTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void mutatedListsAreRefusedOrReadConsistently_data();
    void mutatedListsAreRefusedOrReadConsistently();
};

void PropertyListFuzzTest::mutatedListsAreRefusedOrReadConsistently_data()
{
    QTest::addColumn<QByteArray>("seed");
    QTest::newRow("XML") << xmlSeed();
    QTest::newRow("binary") << binarySeed();
}

void PropertyListFuzzTest::mutatedListsAreRefusedOrReadConsistently()
{
    QFETCH(QByteArray, seed);
    QVERIFY(propertyListFromData(seed));
    Mutator mutator;
    auto accepted = 0;
    for (auto i = 0; i < mutations; ++i) {
        const auto mutated = mutator.mutate(seed);
        // A copy of exactly this size, as QByteArray keeps a zero behind its bytes.
        const std::vector<char> exact(mutated.begin(), mutated.end());
        const auto data = QByteArray::fromRawData(exact.data(), static_cast<int>(exact.size()));
        const auto value = propertyListFromData(data);
        if (!value || !value->isValid()) {
            continue;
        }
        ++accepted;
        const auto written = propertyListToData(*value);
        const auto again = propertyListFromData(written);
        if (!again || propertyListToData(*again) != written) {
            QFAIL(("Mutation " + QByteArray::number(i) + ": " + mutated.toPercentEncoding())
                      .constData());
        }
    }
    // Else the mutations would be too wild to test anything but the first check.
    QVERIFY2(accepted > mutations / 20, QByteArray::number(accepted).constData());
    QVERIFY2(accepted < mutations, QByteArray::number(accepted).constData());
}

TEST_CLASS(PropertyListFuzzTest, QCoreApplication)
#include "PropertyListFuzzTest.moc"
