' cscript walk.vbs MODE QUERY: what a query finds, as a script sees it.
'   rows   a line for each row, its values parted by "|"
'   items  each item of the result with its properties, and what is below it, indented
'   dump   the XMLDump of each item
Option Explicit

Dim session, result, mode
mode = WScript.Arguments(0)
Set session = GetObject("new:{511A59C1-2C14-4894-BCCD-5ECCFA1D3FF8}")
session.DisableAsyncMode
Set result = session.RunQuerySync(WScript.Arguments(1), Empty, -1)

If result.IsError Then
  WScript.Echo "error: " & result.asString
ElseIf Not result.IsVector Then
  WScript.Echo result.asString
Else
  ShowVector result.asVector
End If

Sub ShowVector(rows)
  Dim i
  For i = 0 To rows.ValuesCount - 1
    ShowRow rows.Value(i)
  Next
End Sub

Sub ShowRow(row)
  If row.IsVDiagItem Then
    If mode = "dump" Then
      WScript.Echo row.asVDIagItem.XMLDump
    Else
      ShowItem row.asVDIagItem, ""
    End If
  ElseIf row.IsVector Then
    Dim i, line, cells
    Set cells = row.asVector
    If cells.ValuesCount > 0 Then
      If cells.Value(0).IsVDiagItem Then
        ShowRow cells.Value(0)
        Exit Sub
      End If
    End If
    line = ""
    For i = 0 To cells.ValuesCount - 1
      If i > 0 Then line = line & "|"
      line = line & cells.Value(i).asString
    Next
    WScript.Echo line
  Else
    WScript.Echo row.asString
  End If
End Sub

Sub ShowItem(item, indent)
  Dim param, child, count
  WScript.Echo indent & item.Name
  count = 0
  For Each param In item.Params
    count = count + 1
    If param.Type = 2 Then
      WScript.Echo indent & "  " & param.Name & "=" & param.DWordValue
    Else
      WScript.Echo indent & "  " & param.Name & "=" & param.StringValue
    End If
  Next
  If count <> item.Params.Count Then WScript.Echo "For Each and Count differ"
  For Each child In item.DiagItems
    ShowItem child, indent & "  "
  Next
  If item.DiagItems.Count > 0 Then
    If item.DiagItems(1).Name <> item.DiagItems.Item(1).Name Then WScript.Echo "Item is no default"
  End If
End Sub
