#include <QAbstractItemModelTester>
#include <QtTest>

#include "data_grid_model.h"
#include "design_list_models.h"

namespace zephyr::editor {

class EditorModelsTest : public QObject {
  Q_OBJECT

 private:
  // Shop: 02 Snacks > 01 Crisps, and 01 Drinks > 03 Cocoa, 03 Cola, 01 Tea,
  // added out of code order; Cocoa and Cola share their own code.
  std::shared_ptr<PopupClass> popup_;
  std::unique_ptr<DataGridModel> grid_;
  int32_t snacks_ = 0, crisps_ = 0, drinks_ = 0, cola_ = 0, tea_ = 0, cocoa_ = 0;

 private slots:
  void init() {
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".")));
    popup_ = std::make_shared<PopupClass>();
    popup_->Title("Shop");
    popup_->ReplaceLevels({{Variant("Aisle"), 1}, {Variant("Shelf"), 2}});
    popup_->ReplaceFields({{"Name", 10, 0, 1}, {"Price", 5, 0, 2}});
    auto snacks = popup_->AddItem(nullptr, "  02", {"Snacks", ""});
    auto drinks = popup_->AddItem(nullptr, "  01", {"Drinks", "9"});
    snacks_ = snacks->Identity(), drinks_ = drinks->Identity();
    crisps_ = popup_->AddItem(snacks, "0201", {"Crisps", "1"})->Identity();
    cocoa_ = popup_->AddItem(drinks, "9903", {"Cocoa", "4"})->Identity();
    cola_ = popup_->AddItem(drinks, "0103", {"Cola", "2"})->Identity();
    tea_ = popup_->AddItem(drinks, "0101", {"Tea", "3"})->Identity();
    grid_ = std::make_unique<DataGridModel>();
    new QAbstractItemModelTester(
        grid_.get(), QAbstractItemModelTester::FailureReportingMode::QtTest, grid_.get());
    grid_->Load(popup_);
  }

  void outlineShowsTitleCodesAndValues() {
    QModelIndex title = grid_->TitleIndex();
    QCOMPARE(title.data(Qt::UserRole).toInt(), 0);
    QModelIndex first = grid_->index(0, 0, title);  // collection order until sorted
    QCOMPARE(first.data().toString(), QString("02"));
    QCOMPARE(grid_->IndexOfIdentity(cola_).siblingAtColumn(2).data().toString(), QString("2"));
    QVERIFY(!grid_->ItemAt(title));
    // The title row keeps the title it was filled with until filled anew.
    popup_->Title("Store");
    QCOMPARE(title.data().toString(), QString("Shop"));
  }

  void sortingOrdersTheGridOnly() {
    QPersistentModelIndex cocoa(grid_->IndexOfIdentity(cocoa_));
    grid_->SortTree();
    const std::vector<int32_t> sorted{drinks_, tea_, cocoa_, cola_, snacks_, crisps_};
    QCOMPARE(grid_->IdentitiesInGridOrder(), sorted);  // equal codes keep their order
    QCOMPARE(cocoa.row(), 1);
    QCOMPARE(popup_->PopupItems()->Item(1)->Identity(), snacks_);
    QCOMPARE(popup_->PopupItems()->Item(2)->Children()->Item(1)->Identity(), cocoa_);

    auto drinks = popup_->PopupItems()->Item(2);
    int32_t coffee = popup_->AddItem(drinks, "0102", {"Coffee", "5"})->Identity();
    QModelIndex appended = grid_->AppendRow(grid_->IndexOfIdentity(drinks_), coffee);
    QCOMPARE(appended.row(), 3);
    grid_->SortChildren(grid_->IndexOfIdentity(drinks_));
    QCOMPARE(grid_->IndexOfIdentity(coffee).row(), 1);
    QCOMPARE(cocoa.row(), 2);

    // A re-keyed row keeps its place until the next sort, which finds it.
    auto tea = FindItemByIdentity(tea_);
    popup_->ModifyKey("09", tea, 2);
    grid_->KeyChanged(grid_->IndexOfIdentity(tea_));
    QCOMPARE(grid_->IndexOfIdentity(tea_).row(), 0);
    int32_t juice = popup_->AddItem(drinks, "0104", {"Juice", "6"})->Identity();
    grid_->AppendRow(grid_->IndexOfIdentity(drinks_), juice);
    grid_->SortTree();
    const std::vector<int32_t> resorted{drinks_, coffee, cocoa_,  cola_,
                                        juice,   tea_,   snacks_, crisps_};
    QCOMPARE(grid_->IdentitiesInGridOrder(), resorted);
  }

  void rowsOfFreedItemsShowNothing() {
    QVERIFY(popup_->RemoveItem(popup_->PopupItems()->Item(1)));  // snacks, behind the model
    for (int32_t gone : {snacks_, crisps_}) {
      QModelIndex row = grid_->IndexOfIdentity(gone);
      QVERIFY(row.isValid());
      QVERIFY(!grid_->ItemAt(row));
      QVERIFY(!row.data().isValid());
      QVERIFY(!row.siblingAtColumn(1).data().isValid());
    }
    grid_->SortTree();
    grid_->RemoveRow(grid_->IndexOfIdentity(snacks_));
    QVERIFY(!grid_->IndexOfIdentity(snacks_).isValid());
    QVERIFY(!grid_->IndexOfIdentity(crisps_).isValid());
    QCOMPARE(grid_->rowCount(grid_->TitleIndex()), 1);
  }

  void fieldLengthKeepsTheTypedTextAndSwapsWithIt() {
    auto first = std::make_shared<PopupField>();
    FieldListModel model;
    model.Reset({first, std::make_shared<PopupField>()});
    // A length that does not fit 16 bits keeps the one before, and the text
    // typed stays.
    QVERIFY(model.setData(model.index(0, 1), QString("7"), Qt::EditRole));
    QVERIFY(model.setData(model.index(0, 1), QString("99999"), Qt::EditRole));
    QCOMPARE(model.index(0, 1).data().toString(), QString("99999"));
    QCOMPARE(int{first->FieldLength()}, 7);
    model.Swap(0, 1);
    QVERIFY(model.Fields()[1] == first);
    QCOMPARE(model.index(1, 1).data().toString(), QString("99999"));
    QCOMPARE(model.index(0, 1).data().toString(), QString("0"));
    // A new field's cells are empty: its length must be typed.
    model.AppendNew();
    QCOMPARE(model.LengthText(2), std::string());
    QCOMPARE(model.index(2, 0).data().toString(), QString());
  }
};

}  // namespace zephyr::editor

QTEST_GUILESS_MAIN(zephyr::editor::EditorModelsTest)
#include "editor_models_test.moc"
