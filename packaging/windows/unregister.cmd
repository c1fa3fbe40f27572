@echo off
rem Takes back what register.cmd did; run it before the files are removed.
regsvr32 /s /u "%~dp0KESTRA.DLL"
if errorlevel 1 goto failed
echo KESTRA.DLL is no longer registered.
exit /b 0
:failed
echo KESTRA.DLL could not be unregistered.
exit /b 1
