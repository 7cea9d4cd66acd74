// Messages checked by hand, a few from every block, chosen where the tables
// are irregular (slips, labels that name another field than the one filling
// the placeholder, hidden fields, cuts); the XML fields from a parser that
// really failed; text pointers kept uncopied; the check that turns BAD
// strings away; getters whose names or types are easy to get wrong.
#include "ZORSimBadZORString.h"
#include "ZORSimExcAtr.h"
#include "ZORSimExcRegistry.h"
#include "ZORSimExceptions.h"

#include <expat.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

namespace {

const bool kReportsOff = (ZORSimUttAssertDisableExcReport(), true);

std::string Text(const ZORBasException& e) {
    return e.AsString(ZORBasStringMode(false)).str();
}

void ExpectMessages(std::initializer_list<std::pair<std::string, std::string>> cases) {
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(text, expected);
}

// Same getter name, different types; text pointers stay pointers.
static_assert(std::is_same_v<decltype(ZORSimExcAssociationSelectionNoSuchStringKey("k").GetKey()),
                             ZORSimUttExceptionString<64>>);
static_assert(std::is_same_v<decltype(ZORSimExcAssociationSelectionNoSuchIntKey(1).GetKey()), int>);
static_assert(
    std::is_same_v<decltype(ZORSimExcUpgradePreconditionError(nullptr).GetErrorReport()), const char*>);
static_assert(
    std::is_same_v<decltype(ZORSimExcDatabaseNotSIM("f").GetFilePathName()), ZORSimUttExceptionString<1024>>);
static_assert(
    std::is_same_v<decltype(ZORSimExcSrvException("t").GetExc_string()), ZORSimUttExceptionString<1024>>);

// Cut and zero fill are those of ZORSimUttUtils::Copy.
TEST(ExceptionString, TakesTextsAndZORStringsAndCopiesWhole) {
    EXPECT_STREQ(ZORSimUttExceptionString<1024>(ZORString()).AsString(), "");
    EXPECT_STREQ(ZORSimUttExceptionString<1024>(ZORString("r\xC3\xA9sum\xC3\xA9")).AsString(),
                 "r\xC3\xA9sum\xC3\xA9");
    EXPECT_STREQ(ZORSimUttExceptionString<64>(static_cast<const char*>(nullptr)).AsString(), "");
    const ZORSimUttExceptionString<32> shortText("ab");
    const ZORSimUttExceptionString<32> copy = shortText; // the whole array travels
    EXPECT_EQ(std::memcmp(&copy, &shortText, 32), 0);
}

TEST(Messages, FoundationBlocks) {
    ExpectMessages({
        {Text(ZORSimExcIOBounds(1, 2, 18446744073709551615ULL)),
         "I/O out of bounds - start: 1, end: 2, limit: 18446744073709551615"},
        {Text(ZORSimExcSystemError("CreateFile", ZORBasSystemError(ENOENT))),
         std::string("System Error CreateFile: ") + std::strerror(ENOENT)},
        {Text(ZORSimExcFileCloseFailed(ZORBasSystemError(EIO))),
         std::string("Error occurred when closing file: ") + std::strerror(EIO) + "."},
        {Text(ZORSimExcNoSuchForm("ABCDEFGHIJKLMNOP")), "No such form: ABCDEFGHI"},
        {Text(ZORSimExcNeedUpgrade(3, 4, "/data/a.sim")),
         "Binary format incompatible. Upgrade or downgrade required.\n applicationVersion: 3\n "
         "databaseVersion: 4\n file: /data/a.sim\n"},
        // Three values, two placeholders: the bulk ID stands where the first
        // GUID is named and the second GUID is not shown.
        {Text(ZORSimExcInconsistentGUID(17, "{guid-one}", "{guid-two}")),
         "SIM Document is inconsistent. Bulk GUID mismatch: 17 != {guid-one}"},
        {Text(ZORSimExcCantCreateFile("a.b")), "Can't creat file: a.b. Already present in document."},
        {Text(ZORSimExcInvalidGUID()), "Invalid GUID has been provided when creating pool.\n"},
        {Text(ZORSimExcXMLBadContentEncoding("b64")), "Unrecognized content encoding (\"base\"): b64\n"},
        {Text(ZORSimExcBulkFileBlocked("/b/1.bulk")),
         "Bulk file access blocked: /b/1.bulk\n remove SIM_BULK_LAZY_LOAD enviroment variable to unblock\n"},
        {Text(ZORSimExcBadStringArgument()),
         "String passed into SIM is BAD. set/setenv _ZOR_FAIL_ON_BAD and rerun."},
    });
}

// Texts kept as written, slips included; where a label names another field
// than the one filling its placeholder, the field order wins.
TEST(Messages, SchemaBlocks) {
    ExpectMessages({
        // Handles, schema definitions, view schemas.
        {Text(ZORSimExcEmptyTypeHandle(std::string(70, 'h').c_str())),
         "Thrown when a method is called on an empty type handle. The form manager object may have been "
         "destroyed. Name of the empty handle: " +
             std::string(63, 'h') + "."},
        {Text(ZORSimExcViewInvalidCategory(-4, "F", "T")),
         "And invalid category was specified. Invalid category that was specified: -4. Form name of the "
         "offending type: F. Type name of the offending type: T."},
        {Text(ZORSimExcSSDLInvalidAttribute("elem", 12, "parent", "attr")),
         "Thrown by the parser when a SSDL element contains an invalid attribute. Name of the element where "
         "the error was encountered: elem. Line number: 12. Name of the parent tag: parent. Offending "
         "attribute name: attr."},
        // FTables and view records; collection size first, member index second.
        {Text(ZORSimExcInvalidColumnForFTable()), "Invlaid column number FTable ColumnLabel."},
        {Text(ZORSimExcUserLabelBeforeSchemaLabelForOptionalIndependentColumnInFTable("u2")),
         "The specified table does not exist. User specified optional dependent column: u2."},
        {Text(ZORSimExcViewDataRecordIndexOutOfRange(10, 12)),
         "Data record doesn't exist - member index is larger than its collection size. : 10. : 12."},
        // Transactions and dependencies: the form name stands behind "Source level:".
        {Text(ZORSimExcTransactionDuplicateRecordInCollection()),
         "Attempt to insert record with index that alread exists in the collection."},
        {Text(ZORSimExcTypeDependencyException("srcForm", 3, "tgtForm")),
         "A generic exception thrown for dependency specification errors. Source level: srcForm. Source "
         "form name: 3. Target form name: tgtForm."},
        // Type forms.
        {Text(ZORSimExcTypeFormCannotBeModified("F")),
         "Thrown if a an attempt was made to add types to a form that has already been queried. Type form "
         "name: F."},
        {Text(ZORSimExcTypeFormRenamedTypeNotDeleted("F", "RF", 2, "RT", 3, "T")),
         "Thrown when a type is renamed (moved) to a form another form, and the renamed type is not deleted "
         "in the original form. Type form name: F. Named of the form of the renamed type: RF. Level at which "
         "the renamed type was expected to be deleted: 2. Name of the renamed type: RT. Level of the "
         "offending type instantiation: 3. Type name: T."},
        // Data records: categories in the placeholders labelled as names and
        // the other way round; a message that shows no field.
        {Text(ZORSimExcDataRecordInvalidCategory(5, 6, "RF", "RT")),
         "Thrown when data of wrong type used when reading or writing data record member. Type name of data "
         "record: 5. Form name of data record: 6. Category enum pertaining to passed data type. (See "
         "ZORSimCategory): RF. Category enum pertaining to defined data type. (See ZORSimCategory): RT."},
        {Text(ZORSimExcTypeDataRecordEmptyMemberName("RF", "RT")),
         "Thrown when a data record member has an empty name."},
        // Associations, collections, grids.
        {Text(ZORSimExcTypeGridException("GF", "GT")),
         "Base for exceptions thrown for Grid schema. Type name of grid: GF. Form name of grid: GT."},
        {Text(ZORSimExcTypeAssociationMemberTargetInvalidType("role", "AT", "AF", "why", 1, "TF", 0, "TT")),
         "Thrown when the target type of an association member cannot be accepted. Type name of association: "
         "role. Form name of association: AT. Name of association member: AF. Reason why the exception was "
         "thrown: why. Category of the invalid target: 1. Form name of the invalid target: TF. Position of "
         "the invalid target: 0. Type name of the invalid target: TT."},
        {Text(ZORSimExcDynamicIDInvalidCategory(99)),
         "Thrown when building Dynamic ID and Category is out of range. Invalid specified Category enum. "
         "(See ZORSimCategory): 99."},
    });
    // Getters reached only through their exact, misspelt names, and fields
    // that no placeholder shows.
    EXPECT_STREQ(
        ZORSimExcTypeCollectionTargetInvalidType("CF", "CT", "why", 3, "TF", "TT").GetReaseon().AsString(),
        "why");
    EXPECT_EQ(ZORSimExcDynamicIDInvalidCategory(99).GetCategorySecified(), 99);
    EXPECT_STREQ(ZORSimExcTypeDataRecordEmptyMemberName("RF", "RT").GetDataRecordTypeName().AsString(), "RT");
    EXPECT_STREQ(ZORSimExcTypeFormMissingLevelForDependency("F", "B", "7").GetDepLevel().AsString(), "7");
}

TEST(Messages, LinkTransferDrawerAndDatabaseBlocks) {
    ExpectMessages({
        {Text(ZORSimExcAssociationWrongLinkOption("f", "r", "t", 1, 2)),
         "Thrown when link is being removed with wrong link option. Form name of association: f. Name of "
         "association member: r. Type name of association: t. Specified link option. (See "
         "ZORSimRecTypeAssociationMember: 1. Required link option. (See ZORSimRecTypeAssociationMember: 2."},
        // The category fills the "%s" labelled form name, the form name the "%d".
        {Text(ZORSimExcSymbolNotAssigned(7, "idForm", "idType")),
         "Thrown if a symbol was requested for a value that did not have any symbol assigned. Form name of "
         "the type of the value ID: 7. Category of the value ID: idForm. Name of the type of the value ID: "
         "idType."},
        // The same label twice: current first, previous last.
        {Text(ZORSimExcCompositionsHaveSameChild("current", 2, "child", "previous")),
         "Thrown when same entity is stored as a child in multiple composition relations. Type name of "
         "composition relationship: current. Category enum of duplicate child ID. (See ZORSimCategory): 2. "
         "Type name of the duplicate ID: child. Type name of composition relationship: previous."},
        {Text(ZORSimExcTransferBadRequest()), "Thrown for various problems in setting up a Transfer. This is "
                                              "an abstract base -- don't throw this, but rather some derived "
                                              "type."},
        {Text(ZORSimExcTransferBadRequestSetsparseNeedsMake()),
         "SetSparseNNZero can only be used when when SetMakeNewDrawer is"},
        {Text(ZORSimExcTransferBadRequestNotSparseAndFillval()),
         "Initialization value cannot be spacified for sparse drawers"},
        {Text(ZORSimExcTransferIncompatibleSerialization()),
         "A transfer method is called that is incompatible with the specified serialization type."},
        {Text(ZORSimExcDistLTInvalidBufferSize(2, 10, 12)),
         "Buffer size must be the same as that of the drawer. Dimensio: 2. Buffer dimension siz: 10. Drawer "
         "dimension siz: 12."},
        {Text(ZORSimExcDrawerEmptyCSet()),
         "Cannot create a drawer with a dimension defined by en empty cset."},
        {Text(ZORSimExcAssociationSelectionNoSuchStringKey("red")),
         "A bad string key was specified. The bad string key that was specified: red."},
        {Text(ZORSimExcCMemberMapCmemberNotMapped(41)),
         "An attempt was made to use the CMemberMap find the image of a cmember for which the map defines no "
         "image. The index of the offending c-member: 41."},
        // Texts shared by classes of different names stay shared.
        {Text(ZORSimExcDrawerSparseDataAndColumnIndicesBuffersRequired()),
         Text(ZORSimExcDrawerSparseRowOffsetsAndBlockIndicesRequired())},
        {Text(ZORSimExcDrawerBadSerialization()), Text(ZORSimExcDistributionBadSerialization())},
        {Text(ZORSimExcDrawerBadSerialization()), "Incompatible serialization types."},
        // bool through "%b" as 0/1, long long through "%ld", floats fixed to six decimals.
        {Text(ZORSimExcPrivateForCorrectnessTesting(true, -5, 1099511627776LL, 1.5F, -2.25, "str")),
         "To be used only for exception correctness testing. Boolean Member: 1. Integer Membe: -5. Integer "
         "64-bit Member: 1099511627776. Single Precision Floating Point Member: 1.500000. Double Precision "
         "Floating Point Member:-2.250000. String Membe: str."},
        {Text(ZORSimExcFormNameSuppliedToUpgradeIsMissingOnDatabase("F1")),
         "Upgrade was called for form A and A does not exist in the database. form whose form transform "
         "function has not been supplie: F1."},
        // The ready-made text is shown as it is, placeholders and all.
        {Text(ZORSimExcSrvException("server said: %d of 100% %s")), "server said: %d of 100% %s"},
        {Text(ZORSimExcUpgradePreconditionError(nullptr)), "Upgrade/Downgrade error: (null)"},
        // One code, two classes told apart by class and message.
        {Text(ZORSimExcExtCSetNonEmpty()), "Extendable dimension CSet not empty."},
        {Text(ZORSimExcNeedManualFunctions()),
         "Upgrade failed. Required manual functions are not available."},
    });
}

TEST(Messages, XmlFieldsFromAParserThatFailed) {
    XML_Parser parser = XML_ParserCreate(nullptr);
    const char broken[] = "<root>\n  <item/>\n  <oops></root>";
    ASSERT_EQ(XML_Parse(parser, broken, sizeof broken - 1, 1), XML_STATUS_ERROR);
    ASSERT_EQ(XML_GetCurrentLineNumber(parser), 3u);
    const std::string column = std::to_string(XML_GetCurrentColumnNumber(parser));
    const std::string at = " At line 3, column: " + column + " in the XML stream.\n";
    const ZORSimUttSerParserPlace place(parser);

    ZORSimExcXMLExpatParseError parse{ZORSimUttSerParserError(parser), place};
    EXPECT_EQ(Text(parse), std::string("Expat parser encountered an error: ") +
                               XML_ErrorString(XML_ERROR_TAG_MISMATCH) + "\n" + at);
    // A string shown through "%d", and the place that follows it.
    EXPECT_EQ(Text(ZORSimExcXMLBadTypeSize("eight", place)), "Bad type size attribute value: eight\n" + at);
    const std::string csv =
        "Corrupt comma separated value stream near line 3, column: " + column + " in the XML stream.\n ";
    EXPECT_EQ(Text(ZORSimExcXMLBadCSV(place, "row 9")), csv + "row 9\n");
    EXPECT_EQ(Text(ZORSimExcXMLBadCSV(place, nullptr)), csv + "(null)\n");
    EXPECT_EQ(Text(ZORSimExcXMLWrongEndTag("oops", "item", place)),
              "XML parser encountered the wrong end tag: \"oops\", when expecting \"item\"\n" + at);
    XML_ParserFree(parser);

    // The runtime error is errno of a real failing call, kept as it was.
    ASSERT_EQ(std::fopen("/nonexistent-zorsim-dir/none.txt", "rb"), nullptr);
    const ZORSimExcXMLReadError read{ZORSimUttSerSystemError()};
    errno = EACCES;
    EXPECT_EQ(Text(read),
              std::string("An error occurred while reading XML stream: ") + std::strerror(ENOENT) + "\n");
}

// The report text is not copied: the message follows the caller's buffer,
// and clones and thrown copies share the pointer.
TEST(Messages, TextPointerFollowsTheCallersBuffer) {
    char report[] = "form A missing";
    const ZORSimExcUpgradePreconditionError error(report);
    report[5] = 'B';
    EXPECT_EQ(Text(error), "Upgrade/Downgrade error: form B missing");
    const std::unique_ptr<ZORBasException> clone(error.Clone());
    ASSERT_NE(clone, nullptr);
    EXPECT_EQ(dynamic_cast<const ZORSimExcUpgradePreconditionError&>(*clone).GetErrorReport(), report);
    try {
        error.Propagate();
        ADD_FAILURE() << "Propagate returned";
    } catch (const ZORSimExcUpgradePreconditionError& thrown) {
        EXPECT_EQ(thrown.GetErrorReport(), report);
    }
}

TEST(Messages, BadStringsAreTurnedAwayWithTheCheckAsSource) {
    EXPECT_NO_THROW(ZORSimBadZORString::Check(ZORString("result.sim")));
    EXPECT_NO_THROW(ZORSimBadZORString::Check(ZORString("")));
    for (const ZORString& bad : {ZORString::BAD(), ZORString("\xff\xfe not UTF-8")}) {
        try {
            ZORSimBadZORString::Check(bad);
            ADD_FAILURE() << "no exception";
        } catch (const ZORSimExcBadStringArgument& error) {
            EXPECT_STREQ("ZORSimBadZORString", error.ThrowFile());
            EXPECT_EQ(16, error.ThrowLine());
        }
    }
}

TEST(Messages, ExportedFormatterAgreesWithTheClasses) {
    const ZORBasStringMode mode(true);
    EXPECT_EQ((atr<unsigned long long, unsigned long long, unsigned long long>(
                   "I/O out of bounds - start: %lld, end: %lld, limit: %lld", 1, 2, 3, mode)
                   .str()),
              Text(ZORSimExcIOBounds(1, 2, 3)));
    EXPECT_EQ((atr<const char*>("%s and %s", "one", mode).str()), "one and %s");
}

} // namespace
