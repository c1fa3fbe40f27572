' Lists the processes of this machine. After register.cmd: cscript //nologo example.vbs
Set session = GetObject("new:{511A59C1-2C14-4894-BCCD-5ECCFA1D3FF8}")
session.DisableAsyncMode
Set result = session.RunQuerySync("SELECT PID, ImageName FROM Processes.Process", Empty, -1)
If result.IsError Then
  WScript.Echo result.asString
  WScript.Quit 1
End If
Set rows = result.asVector
For i = 0 To rows.ValuesCount - 1
  Set row = rows.Value(i).asVector
  WScript.Echo row.Value(0).asString & vbTab & row.Value(1).asString
Next
