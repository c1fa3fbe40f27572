@echo off
rem Makes the automation class known, for the machine or, without the right to that, for the user.
regsvr32 /s "%~dp0KESTRA.DLL" && echo KESTRA.DLL is registered. || (echo KESTRA.DLL could not be registered. & exit /b 1)
