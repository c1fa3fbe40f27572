@echo off
rem Makes the automation class known, for the machine or, without the right to that, for the user.
regsvr32 /s "%~dp0KESTRA.DLL"
if errorlevel 1 goto failed
echo KESTRA.DLL is registered.
exit /b 0
:failed
echo KESTRA.DLL could not be registered.
exit /b 1
