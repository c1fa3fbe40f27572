// cscript walk.js PROGID MODE QUERY: as walk.vbs, over a name that is registered for the class.
var mode = WScript.Arguments.Item(1);
var session = new ActiveXObject(WScript.Arguments.Item(0));
session.DisableAsyncMode();
var result = session.RunQuerySync(WScript.Arguments.Item(2), null, -1);

if (result.IsError) {
  WScript.Echo("error: " + result.asString);
} else if (!result.IsVector) {
  WScript.Echo(result.asString);
} else {
  var rows = result.asVector;
  for (var i = 0; i < rows.ValuesCount; ++i) showRow(rows.Value(i));
}

function showRow(row) {
  if (row.IsVDiagItem) {
    if (mode == "dump") WScript.Echo(row.asVDIagItem.XMLDump);
    else showItem(row.asVDIagItem, "");
    return;
  }
  if (!row.IsVector) {
    WScript.Echo(row.asString);
    return;
  }
  var cells = row.asVector;
  if (cells.ValuesCount > 0 && cells.Value(0).IsVDiagItem) {
    showRow(cells.Value(0));
    return;
  }
  var line = [];
  for (var i = 0; i < cells.ValuesCount; ++i) line.push(cells.Value(i).asString);
  WScript.Echo(line.join("|"));
}

function showItem(item, indent) {
  WScript.Echo(indent + item.Name);
  var count = 0;
  for (var params = new Enumerator(item.Params); !params.atEnd(); params.moveNext()) {
    var param = params.item();
    ++count;
    var value = param.Type == 2 ? param.DWordValue : param.StringValue;
    WScript.Echo(indent + "  " + param.Name + "=" + value);
  }
  if (count != item.Params.Count) WScript.Echo("Enumerator and Count differ");
  for (var items = new Enumerator(item.DiagItems); !items.atEnd(); items.moveNext())
    showItem(items.item(), indent + "  ");
}
