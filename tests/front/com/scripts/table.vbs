' cscript table.vbs QUERIES ROWS: runs the queries of a file, which are parted by lines "<<query>>", and
' writes what they give into another as `kestra --format text` does, each below such a line. Both files
' are UTF-16. A row that is an item is "(item)".
Option Explicit

Dim files, queries, query, rows, session
Set files = CreateObject("Scripting.FileSystemObject")
queries = Split(files.OpenTextFile(WScript.Arguments(0), 1, False, -1).ReadAll, "<<query>>" & vbCrLf)
Set rows = files.CreateTextFile(WScript.Arguments(1), True, True)
Set session = GetObject("new:{511A59C1-2C14-4894-BCCD-5ECCFA1D3FF8}")
session.DisableAsyncMode
For Each query In queries
  rows.WriteLine "<<query>>"
  ShowResult session.RunQuerySync(query, Empty, -1)
Next
rows.Close

Sub ShowResult(result)
  Dim elements, i
  If result.IsError Then
    rows.WriteLine "Error: " & result.asString
  ElseIf result.IsVector Then
    Set elements = result.asVector
    For i = 0 To elements.ValuesCount - 1
      rows.WriteLine LineOf(elements.Value(i))
    Next
  Else
    rows.WriteLine CellOf(result)
  End If
End Sub

Function LineOf(element)
  Dim cells, i
  If Not element.IsVector Then
    LineOf = CellOf(element)
    Exit Function
  End If
  Set cells = element.asVector
  LineOf = ""
  For i = 0 To cells.ValuesCount - 1
    If i > 0 Then LineOf = LineOf & vbTab
    LineOf = LineOf & CellOf(cells.Value(i))
  Next
End Function

Function CellOf(cell)
  If cell.IsVDiagItem Then
    CellOf = "(item)"
  Else
    CellOf = Replace(Replace(Replace(cell.asString, vbTab, " "), vbCr, " "), vbLf, " ")
  End If
End Function
