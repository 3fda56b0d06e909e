// An object table, without the layers above.
#include <sorrelin/document/object_table.h>

#include <memory>

int main() {
  auto const table = std::make_unique<sorrelin::ObjectTable>();
  table->Change(3) = {100, 0, 1};
  table->SetRowsInDocument(4);
  return table->IsTaken(3) && table->NextOffsetAbove(50, 200) == 100 ? 0 : 1;
}
