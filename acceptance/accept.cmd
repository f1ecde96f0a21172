@echo off
rem Runs the acceptance kit. Start it as administrator; readme.txt says what it does and what its exit codes mean.
setlocal
rem The report of an earlier run stays.
set "REFUSAL=%~dp0report.txt"
if exist "%REFUSAL%" set "REFUSAL=%~dp0report-refused.txt"
set "PROCESSORS=%PROCESSOR_ARCHITECTURE%"
if not "%PROCESSOR_ARCHITEW6432%"=="" set "PROCESSORS=%PROCESSOR_ARCHITEW6432%"
if /i "%PROCESSORS%"=="AMD64" goto is64
echo REFUSED: 64-bit Windows on an x64 processor is needed; this is %PROCESSORS%. Nothing was changed.
echo REFUSED: 64-bit Windows on an x64 processor is needed; this is %PROCESSORS%. Nothing was changed.>"%REFUSAL%"
exit /b 10
:is64
if exist "%~dp0bin\QuillAcceptance.exe" goto complete
echo REFUSED: The kit is not complete: bin\QuillAcceptance.exe is missing. Unpack it again. Nothing was changed.
echo REFUSED: The kit is not complete: bin\QuillAcceptance.exe is missing. Unpack it again. Nothing was changed.>"%REFUSAL%"
exit /b 15
:complete
"%~dp0bin\QuillAcceptance.exe" %*
exit /b %errorlevel%
