// Link, transfer, drawer, collection and database-format errors (codes 1650
// to 1840): messages checked by hand where the tables are irregular, the
// getters whose types are easy to get wrong, and the transfer family caught
// through its category base.
#include "ZORSimExcRegistry.h"
#include "ZORSimExceptions.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

namespace {

const bool kReportsOff = (ZORSimUttAssertDisableExcReport(), true);

std::string Text(const ZORBasException& e) {
    return e.AsString(ZORBasStringMode(false)).str();
}

void PropagateIt(void* object) {
    static_cast<const ZORBasException*>(object)->Propagate();
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
static_assert(std::is_base_of_v<ZORSimExcTransferBadRequest, ZORSimExcTransferIncompatibleSerialization>);
static_assert(!std::is_base_of_v<ZORSimExcTransferBadRequest, ZORSimExcArrayBounds>);

TEST(TransferDrawerBlocks, LinkAndSymbolMessagesKeepTheirLabelsAndPlaceholders) {
    const std::pair<std::string, std::string> cases[] = {
        // Fields are form, role, type; the labels say member, type, form.
        {Text(ZORSimExcAssociationNoSuchLinkID("aForm", "aRole", "aType", 3, "idForm", "idType", 4, "oForm",
                                               "oType")),
         "Thrown when link being removed from association is not found. Name of association member: aForm. "
         "Type name "
         "of association: aRole. Form name of association: aType. Category enum of ID not found. (See "
         "ZORSimCategory): 3. Form name of the ID not found: idForm. Type name of the ID not found: idType. "
         "Category "
         "enum of other ID not found. (See ZORSimCategory): 4. Form name of the other ID not found: oForm. "
         "Type name "
         "of the other ID not found: oType."},
        {Text(ZORSimExcAssociationNoSuchLinkPos("f", "r", "t", 1, "if", "it", -2)),
         "Thrown when link being removed from association is not found. Form name of association: f. Name of "
         "association member: r. Type name of association: t. Category enum of ID not found. (See "
         "ZORSimCategory): "
         "1. Form name of the ID not found: if. Type name of the ID not found: it. Otherposition in link not "
         "found: "
         "-2."},
        {Text(ZORSimExcAssociationWrongLinkOption("f", "r", "t", 1, 2)),
         "Thrown when link is being removed with wrong link option. Form name of association: f. Name of "
         "association "
         "member: r. Type name of association: t. Specified link option. (See "
         "ZORSimRecTypeAssociationMember: 1. "
         "Required link option. (See ZORSimRecTypeAssociationMember: 2."},
        // The category fills the "%s" labelled form name, the form name the "%d".
        {Text(ZORSimExcSymbolNotAssigned(7, "idForm", "idType")),
         "Thrown if a symbol was requested for a value that did not have any symbol assigned. Form name of "
         "the type "
         "of the value ID: 7. Category of the value ID: idForm. Name of the type of the value ID: idType."},
        {Text(ZORSimExcTypeCompositionInvalidParentType("pForm", "pType", "role")),
         "Thrown when parentType in a composition relationship is invalid. Form name of association: pForm. "
         "Type "
         "name of composition(datatype_rolename): pType. roleName of composition member: role."},
        // The same label twice: current first, previous last.
        {Text(ZORSimExcCompositionsHaveSameChild("current", 2, "child", "previous")),
         "Thrown when same entity is stored as a child in multiple composition relations. Type name of "
         "composition "
         "relationship: current. Category enum of duplicate child ID. (See ZORSimCategory): 2. Type name of "
         "the "
         "duplicate ID: child. Type name of composition relationship: previous."},
        {Text(ZORSimExcAssociationSelectionNoSuchStringKey("red")),
         "A bad string key was specified. The bad string key that was specified: red."},
        {Text(ZORSimExcAssociationSelectionNoSuchIntKey(-9)),
         "A bad int key was specified. The bad int key that was specified: -9."},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(text, expected);
}

TEST(TransferDrawerBlocks, TransferAndDrawerMessagesKeepTheirSlips) {
    const std::pair<std::string, std::string> cases[] = {
        {Text(ZORSimExcTransferBadRequest()), "Thrown for various problems in setting up a Transfer. This is "
                                              "an abstract base -- don't throw this, but "
                                              "rather some derived type."},
        {Text(ZORSimExcTransferBadRequestNotSetdimAndExtension()),
         "Can't call both SetDim and SetDimExtension nor call SetDimExtension for more than one dimension in "
         "a "
         "transfer"},
        {Text(ZORSimExcTransferBadRequestSetsparseNeedsMake()),
         "SetSparseNNZero can only be used when when SetMakeNewDrawer is"},
        {Text(ZORSimExcTransferBadRequestBadSparsity()), "SetSparseNNonzero requires sparse serialization"},
        {Text(ZORSimExcTransferBadRequestMixingIntialize()),
         "GetTransientDrawer,ExecRead, or ExecWrite can't be mixed with InitializePersistentDrawer"},
        {Text(ZORSimExcTransferBadRequestNotSparseAndFillval()),
         "Initialization value cannot be spacified for sparse drawers"},
        {Text(ZORSimExcDatabaseViewIndexCorrupt(16, 40)),
         "Thrown when view index is not a multiple of index node size. Index node size in bytes: 16. Actual "
         "length "
         "on index in bytes: 40."},
        {Text(ZORSimExcDistLTBadBufferSize()),
         "Buffer is not sized correctly to accomodate the drawer data."},
        {Text(ZORSimExcDistLTInvalidBufferSize(2, 10, 12)),
         "Buffer size must be the same as that of the drawer. Dimensio: 2. Buffer dimension siz: 10. Drawer "
         "dimension siz: 12."},
        {Text(ZORSimExcDrawerEmptyCSet()),
         "Cannot create a drawer with a dimension defined by en empty cset."},
        {Text(ZORSimExcTransientDrawerDescriptionNotAvailable()),
         "Drawer description is not availble from a transient drawer whose dimension(s) is defined by "
         "ordinals."},
        {Text(ZORSimExcCollectionTooManyColors(8)),
         "The collection color variant exceeds the maximum allowed. The maximum allowed: 8."},
        {Text(ZORSimExcCMemberMapInvalidCollectionPair()),
         "An attempt was made to define a cmember map with an invalid (implied) collection pair; the "
         "collections are "
         "non-destinct, or non-existent."},
        {Text(ZORSimExcCMemberMapCmemberNotMapped(41)),
         "An attempt was made to use the CMemberMap find the image of a cmember for which the map defines no "
         "image. "
         "The index of the offending c-member: 41."},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(text, expected);

    // Texts shared by classes of different names stay shared.
    EXPECT_EQ(Text(ZORSimExcDrawerSparseDataAndColumnIndicesBuffersRequired()),
              Text(ZORSimExcDrawerSparseRowOffsetsAndBlockIndicesRequired()));
    EXPECT_EQ(Text(ZORSimExcDrawerBadSerialization()), Text(ZORSimExcDistributionBadSerialization()));
    EXPECT_EQ(Text(ZORSimExcDrawerBadSerialization()), "Incompatible serialization types.");
}

TEST(TransferDrawerBlocks, DatabaseFormatMessages) {
    const std::pair<std::string, std::string> cases[] = {
        // bool through "%b" as 0/1, long long through "%ld", floats fixed to six decimals.
        {Text(ZORSimExcPrivateForCorrectnessTesting(true, -5, 1099511627776LL, 1.5F, -2.25, "str")),
         "To be used only for exception correctness testing. Boolean Member: 1. Integer Membe: -5. Integer "
         "64-bit "
         "Member: 1099511627776. Single Precision Floating Point Member: 1.500000. Double Precision Floating "
         "Point "
         "Member:-2.250000. String Membe: str."},
        {Text(ZORSimExcDatabaseNeedsFormatDowngrade(7, 9, "/db/a.sim")),
         "Database version differs from the application version. Internal Version of the application "
         "attempting to "
         "open the database: 7. Internal Version of the database being opened: 9. Name of the database file "
         "being "
         "opened: /db/a.sim."},
        {Text(ZORSimExcFormNameSuppliedToUpgradeIsMissingOnDatabase("F1")),
         "Upgrade was called for form A and A does not exist in the database. form whose form transform "
         "function "
         "has not been supplie: F1."},
        {Text(ZORSimExcDuplicateBulkIdInDocument(12)),
         "A bulk ID has been specified, but this bulk ID already appears in the document. Specified Bulk I: "
         "12."},
        {Text(ZORSimExcGuidNotInDocument("{g}")),
         "A GUID has been specified, but this GUID does not appear in the document. Specified GUI: {g}."},
        // The ready-made text is shown as it is, placeholders and all.
        {Text(ZORSimExcSrvException("server said: %d of 100% %s")), "server said: %d of 100% %s"},
        {Text(ZORSimExcInvalidRowsToReadForFTable(5, 10, 12)),
         "Rows to read is out of bounds - startRow: 5, numRowsToRead: 10, existingRows: 12"},
        {Text(ZORSimExcUpgradePreconditionError(nullptr)), "Upgrade/Downgrade error: (null)"},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(text, expected);

    const ZORSimExcPrivateForCorrectnessTesting all(true, -5, -1099511627776LL, 1.5F, -2.25, "str");
    EXPECT_TRUE(all.GetBoolArg());
    EXPECT_EQ(all.GetIntegerArg(), -5);
    EXPECT_EQ(all.GetLongIntegerArg(), -1099511627776LL);
    EXPECT_EQ(all.GetFloatArg(), 1.5F);
    EXPECT_EQ(all.GetDoubleArg(), -2.25);
    EXPECT_STREQ(all.GetStringArg().AsString(), "str");

    // A whole error text is cut at the field's capacity like any other.
    const std::string longText(1100, 'x');
    EXPECT_EQ(Text(ZORSimExcSrvException(longText.c_str())), longText.substr(0, 1023));
}

TEST(TransferDrawerBlocks, SharedCodeTellsClassesApartOnlyByClassAndMessage) {
    const auto shared = ZORSimExcRegistry::FindByCode(1836);
    ASSERT_EQ(shared.size(), 2u);
    EXPECT_STREQ(shared[0]->name, "ZORSimExcExtCSetNonEmpty");
    EXPECT_STREQ(shared[1]->name, "ZORSimExcNeedManualFunctions");
    const ZORSimExcExtCSetNonEmpty first;
    const ZORSimExcNeedManualFunctions second;
    EXPECT_EQ(first.GetCode(), 1836);
    EXPECT_EQ(second.GetCode(), 1836);
    EXPECT_EQ(Text(first), "Extendable dimension CSet not empty.");
    EXPECT_EQ(Text(second), "Upgrade failed. Required manual functions are not available.");
    EXPECT_FALSE(shared[0]->isA(second));
    EXPECT_FALSE(shared[1]->isA(first));
}

// The report text is not copied: the message follows the caller's buffer,
// and copies share the pointer.
TEST(TransferDrawerBlocks, UpgradeErrorKeepsTheCallersText) {
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

// The transfer family: 1673 to 1729 and 1732 to 1736 derive from
// ZORSimExcTransferBadRequest and hand it nothing; the rest of these blocks
// derive straight from ZORBasException.
bool InTransferFamily(int code) {
    return (code >= 1673 && code <= 1729) || (code >= 1732 && code <= 1736);
}

TEST(TransferDrawerBlocks, TransferBadRequestCatchesItsFamilyAndNothingElse) {
    const ZORSimExcClassInfo* family = ZORSimExcRegistry::FindByName("ZORSimExcTransferBadRequest");
    ASSERT_NE(family, nullptr);
    EXPECT_EQ(family->code, 1672);
    EXPECT_STREQ(family->base, "ZORBasException");

    int members = 0, checked = 0;
    for (int i = 0; i < ZORSimExcRegistry::Count(); ++i) {
        const ZORSimExcClassInfo& info = ZORSimExcRegistry::At(i);
        const bool member = std::string(info.base) == family->name;
        members += member ? 1 : 0;
        if (info.code < 1650)
            continue;
        SCOPED_TRACE(info.name);
        ++checked;
        EXPECT_EQ(member, InTransferFamily(info.code));
        EXPECT_STREQ(info.base,
                     InTransferFamily(info.code) ? "ZORSimExcTransferBadRequest" : "ZORBasException");
        EXPECT_EQ(info.baseArgCount, 0);

        // Zero values fit every field kind of these blocks.
        const std::vector<ZORSimExcValue> values(static_cast<std::size_t>(info.fieldCount));
        const std::unique_ptr<ZORBasException> x(info.create(values.data()));
        ASSERT_NE(x, nullptr);
        EXPECT_EQ(family->isA(*x), member || info.code == 1672);
        EXPECT_EQ(family->catches(&PropagateIt, x.get()), member || info.code == 1672);
    }
    EXPECT_EQ(members, 62);
    EXPECT_EQ(checked, 192);

    // A handler for one member does not take the base or a sibling.
    ZORSimExcTransferBadRequest base;
    ZORSimExcTransferBadRequestNotYet sibling;
    const ZORSimExcClassInfo* member =
        ZORSimExcRegistry::FindByName("ZORSimExcTransferIncompatibleSerialization");
    ASSERT_NE(member, nullptr);
    EXPECT_FALSE(member->catches(&PropagateIt, &base));
    EXPECT_FALSE(member->catches(&PropagateIt, &sibling));
}

// Caught as the family, a propagated member is still itself.
TEST(TransferDrawerBlocks, MemberCaughtAsFamilyKeepsItsCodeAndMessage) {
    try {
        ZORSimExcTransferIncompatibleSerialization().Propagate();
        ADD_FAILURE() << "Propagate returned";
    } catch (const ZORSimExcTransferBadRequest& e) {
        EXPECT_EQ(typeid(e), typeid(ZORSimExcTransferIncompatibleSerialization));
        EXPECT_EQ(e.GetCode(), 1701);
        EXPECT_EQ(Text(e),
                  "A transfer method is called that is incompatible with the specified serialization type.");
        const std::unique_ptr<ZORBasException> clone(e.Clone());
        ASSERT_NE(clone, nullptr);
        EXPECT_EQ(clone->GetCode(), 1701);
    }
}

} // namespace
