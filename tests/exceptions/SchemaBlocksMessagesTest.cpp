// The schema-layer errors (handles, FTables, transactions, type forms, data
// records, associations, collections, grids): messages checked by hand where
// the tables are irregular, and the category families they form.
#include "ZORSimExcRegistry.h"
#include "ZORSimExceptions.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {

const bool kReportsOff = (ZORSimUttAssertDisableExcReport(), true);

std::string Text(const ZORBasException& e) {
    return e.AsString(ZORBasStringMode(false)).str();
}

// Texts kept as written, slips included; where a label names another field
// than the one filling its placeholder, the field order wins.
TEST(SchemaBlocks, IrregularMessages) {
    const std::pair<std::string, std::string> cases[] = {
        // Handles, schema definitions, view schemas.
        {Text(ZORSimExcEmptyTypeHandle(std::string(70, 'h').c_str())),
         "Thrown when a method is called on an empty type handle. The form manager object may have been "
         "destroyed. Name of the empty handle: " +
             std::string(63, 'h') + "."},
        {Text(ZORSimExcContextNotOpened()),
         "A context must to be opened in the database before SIM entities can be accessed or created."},
        {Text(ZORSimExcDatabaseViewSchemaMissing(2, "client", 5, "stored")),
         "Thrown when client supplied schema snapshot does not include the view schema available in the "
         "database. Subsequently database view cannot be extended. formlevel of client supplied schema: 2. "
         "formName of client supplied schema: client. formlevel of schema in database: 5. formName of "
         "schema in database: stored."},
        {Text(ZORSimExcViewInvalidCategory(-4, "F", "T")),
         "And invalid category was specified. Invalid category that was specified: -4. Form name of the "
         "offending type: F. Type name of the offending type: T."},
        {Text(ZORSimExcViewSchemaDoesNotMatchMetadata("mf", "mt", "sf", "st")),
         "The metadata has types that don't exists in the schema. Form name of the metadata: mf. Type name "
         "of the metadata: mt. Form name of the schema: sf. Type name of the schema: st."},
        {Text(ZORSimExcDatabaseNeedsFormLevelUpgrade("db")), "The SIM document needs to be upgraded: db"},
        // FTables and view records.
        {Text(ZORSimExcInvalidColumnForFTable()), "Invlaid column number FTable ColumnLabel."},
        {Text(ZORSimExcInsufficientDataSuppliedForFTable()),
         "Number of rows, number of columns and buffersize does not match for CreatFTable."},
        {Text(ZORSimExcInvalidOrderForOptionalIndependentColumnsInFTable("s1", "u1")),
         "Order of optional independent columns in FTable must match schema order. schema specified "
         "optional dependent column: s1. User specified optional dependent column: u1."},
        {Text(ZORSimExcUserLabelBeforeSchemaLabelForOptionalIndependentColumnInFTable("u2")),
         "The specified table does not exist. User specified optional dependent column: u2."},
        // Collection size first, member index second.
        {Text(ZORSimExcViewDataRecordIndexOutOfRange(10, 12)),
         "Data record doesn't exist - member index is larger than its collection size. : 10. : 12."},
        // Transactions, snapshots, dependencies.
        {Text(ZORSimExcTransactionDuplicateRecordInCollection()),
         "Attempt to insert record with index that alread exists in the collection."},
        {Text(ZORSimExcTransactionInvalidCategory(7)),
         "Invalid type category The category that was specified: 7."},
        {Text(ZORSimExcTypeQualifiedNameInvalidName("F", "T")),
         "Thrown when either only the form or only the name is empty in a qualified name.Alternatively, "
         "thrown when typeName is duplicated across typeForms Form name: F. Type name: T."},
        // The base shows the form name behind "Source level:"; its members do not.
        {Text(ZORSimExcTypeDependencyException("srcForm", 3, "tgtForm")),
         "A generic exception thrown for dependency specification errors. Source level: srcForm. Source "
         "form name: 3. Target form name: tgtForm."},
        {Text(ZORSimExcTypeDependencyLevelMonotonicity("srcForm", 3, "tgtForm", 4, 5)),
         "Thrown if the base form dependency is not monotonic. Source form name: srcForm. Source level: 3. "
         "Target form name: tgtForm. Current Depedency level: 4. Previous Base Form Depedency level: 5."},
        {Text(ZORSimExcTypeSnapshotInvalidTypePosition(2, "F", 9, 8)),
         "Thrown when the position for a type in the schema snapshot is out of bounds. Type form level: 2. "
         "Type form name: F. Invalid position value: 9. Number of types in the snapshot: 8."},
        // Type forms.
        {Text(ZORSimExcTypeFormMissingLevelForDependency("F", "B", "level 3")),
         "Thrown if a form has a base form and base form does not have a level defined as per dependency "
         "tag. Type form name: F. Type form name for baseForm: B. dependency level for current form that is "
         "missing base form level: level 3."},
        {Text(ZORSimExcTypeFormCannotBeModified("F")),
         "Thrown if a an attempt was made to add types to a form that has already been queried. Type form "
         "name: F."},
        {Text(ZORSimExcTypeFormRenamedTypeNotDeleted("F", "RF", 2, "RT", 3, "T")),
         "Thrown when a type is renamed (moved) to a form another form, and the renamed type is not deleted "
         "in the original form. Type form name: F. Named of the form of the renamed type: RF. Level at which "
         "the renamed type was expected to be deleted: 2. Name of the renamed type: RT. Level of the "
         "offending type instantiation: 3. Type name: T."},
        {Text(ZORSimExcBaseTypeInvalidLevel("F", 1, "BT", 2, "T")),
         "Thrown if a type has an invalid level value w.r.t base type level. Type form name: F. Offending "
         "base level value: 1. Base Type name: BT. Offending level value: 2. Type name: T."},
        // Data records: categories in the placeholders labelled as names
        // and the other way round.
        {Text(ZORSimExcDataRecordInvalidCategory(5, 6, "RF", "RT")),
         "Thrown when data of wrong type used when reading or writing data record member. Type name of data "
         "record: 5. Form name of data record: 6. Category enum pertaining to passed data type. (See "
         "ZORSimCategory): RF. Category enum pertaining to defined data type. (See ZORSimCategory): RT."},
        {Text(ZORSimExcTypeSymConstNoAllowedValues("RF", "RT", "m")),
         "Thrown when the symbolic constant does not have any allowed values. Type name of data record: RF. "
         "Form name of data record: RT. Member name: m."},
        {Text(ZORSimExcTypeDataRecordDerivationAcrossForms("RF", "RT", "BF", "BT")),
         "Thrown when a flattened data record has a type derivation across type forms. Form name of data "
         "record: RF. Type name of data record: RT. base form name: BF. base form name: BT."},
        {Text(ZORSimExcTypeDataRecordEmptyMemberName("RF", "RT")),
         "Thrown when a data record member has an empty name."},
        {Text(ZORSimExcTypeTypeIDDefaultNotFound("RF", "RT", "m", "DF", "DT")),
         "Thrown when the default value for the type ID member was not found.Form name of data record: RF. "
         "Type name of data record: RT. Member name: m. Offending form name: DF. Offending type name: DT."},
        {Text(ZORSimExcBulkNaN()), "Attempt to write invalid values (NAN) to a drawer has been detected."},
        // Associations, collections, grids.
        {Text(ZORSimExcTypeGridException("GF", "GT")),
         "Base for exceptions thrown for Grid schema. Type name of grid: GF. Form name of grid: GT."},
        {Text(ZORSimExcTypeCollectionTargetInvalidType("CF", "CT", "why", 3, "TF", "TT")),
         "Thrown when the target type of a collection cannot be accepted. Type name of collection: CF. Form "
         "name of collection: CT. Reason why the exception was thrown.: why. Category of the invalid target: "
         "3. Type name of the invalid target: TF. Form name of the invalid target: TT."},
        {Text(ZORSimExcTypeAssociationMemberTargetInvalidType("role", "AT", "AF", "why", 1, "TF", 0, "TT")),
         "Thrown when the target type of an association member cannot be accepted. Type name of "
         "association: role. Form name of association: AT. Name of association member: AF. Reason why the "
         "exception was thrown: why. Category of the invalid target: 1. Form name of the invalid target: TF. "
         "Position of the invalid target: 0. Type name of the invalid target: TT."},
        {Text(ZORSimExcTypeGridInvalidDimensionPosition("GF", "GT", 2, 5)),
         "Thrown when the position of a grid dimension is out of bounds. Form name of grid: GF. Type name of "
         "grid: GT. Number of target types: 2. Invalid position value: 5."},
        {Text(ZORSimExcDynamicIDInvalidCategory(99)), "Thrown when building Dynamic ID and Category is out "
                                                      "of range. Invalid specified Category enum. (See "
                                                      "ZORSimCategory): 99."},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(text, expected);
}

// Getters reached only through their exact, misspelt names, and fields that
// no placeholder shows.
TEST(SchemaBlocks, GettersOfFieldsTheMessageMisnamesOrHides) {
    const ZORSimExcTypeCollectionTargetInvalidType collection("CF", "CT", "why", 3, "TF", "TT");
    EXPECT_STREQ(collection.GetReaseon().AsString(), "why");
    EXPECT_EQ(ZORSimExcDynamicIDInvalidCategory(99).GetCategorySecified(), 99);
    const ZORSimExcTypeDataRecordEmptyMemberName empty("RF", "RT");
    EXPECT_STREQ(empty.GetDataRecordFormName().AsString(), "RF");
    EXPECT_STREQ(empty.GetDataRecordTypeName().AsString(), "RT");
    EXPECT_STREQ(ZORSimExcTypeFormMissingLevelForDependency("F", "B", "7").GetDepLevel().AsString(), "7");
}

// Each family member hands its base the base's own fields, in the base's
// order, and keeps its own copies; the base part answers the base's getters.
TEST(SchemaBlocks, BasePartsHoldTheHandedValues) {
    const ZORSimExcTypeAssociationMemberTargetInvalidType target("role", "AT", "AF", "why", 1, "TF", 0, "TT");
    const ZORSimExcTypeAssociationMemberException& member = target;
    EXPECT_STREQ(member.GetAssociationFormName().AsString(), "AF");
    EXPECT_STREQ(member.GetAssociationRoleName().AsString(), "role");
    EXPECT_STREQ(member.GetAssociationTypeName().AsString(), "AT");
    EXPECT_STREQ(target.GetAssociationFormName().AsString(), "AF");

    // Two levels down: the grid names three times, the role name twice.
    const ZORSimExcTypeGridDimensionInvalidTargetPosition dimension("GF", "GT", "dim", 4, 2);
    const ZORSimExcTypeGridDimensionException& dimensionPart = dimension;
    const ZORSimExcTypeGridException& gridPart = dimension;
    for (const auto& [form, type] :
         {std::pair(dimension.GetGridFormName(), dimension.GetGridTypeName()),
          std::pair(dimensionPart.GetGridFormName(), dimensionPart.GetGridTypeName()),
          std::pair(gridPart.GetGridFormName(), gridPart.GetGridTypeName())}) {
        EXPECT_STREQ(form.AsString(), "GF");
        EXPECT_STREQ(type.AsString(), "GT");
    }
    EXPECT_STREQ(dimensionPart.GetRoleName().AsString(), "dim");
    EXPECT_EQ(gridPart.GetCode(), 1643);
    EXPECT_EQ(Text(gridPart), Text(dimension));

    const ZORSimExcTypeCastError cast("F", 4, "T");
    EXPECT_STREQ(static_cast<const ZORSimExcTypeFormException&>(cast).GetFormName().AsString(), "F");
    try {
        ZORSimExcSSDLInvalidAttribute("elem", 12, "parent", "attr").Propagate();
        ADD_FAILURE() << "Propagate returned";
    } catch (const ZORSimExcSSDLException& e) {
        EXPECT_EQ(e.GetCode(), 1508);
        EXPECT_EQ(e.GetLine(), 12);
        EXPECT_EQ(Text(e),
                  "Thrown by the parser when a SSDL element contains an invalid attribute. Name of the "
                  "element where the error was encountered: elem. Line number: 12. Name of the "
                  "parent tag: parent. Offending attribute name: attr.");
    }
}

// The direct base of every class from 1502 to 1649: the families below, and
// ZORBasException for the rest.
TEST(SchemaBlocks, CategoryFamilies) {
    struct Family {
        const char* base;
        int first, last;
    };
    static const Family kFamilies[] = {
        {"ZORSimExcSSDLException", 1508, 1508},
        {"ZORSimExcTypeSnapshotException", 1575, 1576},
        {"ZORSimExcTypeDependencyException", 1578, 1581},
        {"ZORSimExcTypeFormException", 1583, 1598},
        {"ZORSimExcTypeDataRecordException", 1600, 1612},
        {"ZORSimExcTypeDataRecordMemberException", 1618, 1627},
        {"ZORSimExcTypeAssociationException", 1629, 1631},
        {"ZORSimExcTypeAssociationMemberException", 1633, 1635},
        {"ZORSimExcTypeCollectionException", 1637, 1637},
        {"ZORSimExcTypeGridException", 1639, 1642},
        {"ZORSimExcTypeGridDimensionException", 1643, 1644},
    };
    int classes = 0;
    for (int code = 1502; code <= 1649; ++code) {
        for (const ZORSimExcClassInfo* info : ZORSimExcRegistry::FindByCode(code)) {
            ++classes;
            std::string expected = "ZORBasException";
            for (const Family& family : kFamilies)
                if (code >= family.first && code <= family.last)
                    expected = family.base;
            EXPECT_EQ(info->base, expected) << info->name;
        }
    }
    EXPECT_EQ(classes, 146); // 1505 and 1622 are not assigned
}

} // namespace
