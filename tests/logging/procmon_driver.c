/* A kernel driver that stands for Process Monitor's: it makes the device that the module looks for and
   keeps what is sent to it. */
#include "procmon_protocol.h"

#include <ddk/wdm.h>

#define MAXIMUM_LINES 64

struct line
{
    ULONG size;
    UCHAR* bytes;
};

static struct line lines[MAXIMUM_LINES];
static ULONG first_line, last_line, lines_sent, open_handles;
static BOOLEAN fail_next;

static NTSTATUS complete(IRP* irp, NTSTATUS status, ULONG_PTR size)
{
    irp->IoStatus.Status = status;
    irp->IoStatus.Information = size;
    IoCompleteRequest(irp, IO_NO_INCREMENT);
    return status;
}

static NTSTATUS WINAPI create(DEVICE_OBJECT* device, IRP* irp)
{
    (void)device;
    ++open_handles;
    return complete(irp, STATUS_SUCCESS, 0);
}

static NTSTATUS WINAPI close(DEVICE_OBJECT* device, IRP* irp)
{
    (void)device;
    --open_handles;
    return complete(irp, STATUS_SUCCESS, 0);
}

static NTSTATUS keep_line(const void* bytes, ULONG size)
{
    struct line* line = &lines[last_line % MAXIMUM_LINES];
    ++lines_sent;
    if (fail_next) {
        fail_next = FALSE;
        return STATUS_UNSUCCESSFUL;
    }
    if (last_line - first_line == MAXIMUM_LINES)
        return STATUS_INSUFFICIENT_RESOURCES;
    line->bytes = ExAllocatePoolWithTag(NonPagedPool, size + 1, 0x6c697551);
    if (!line->bytes)
        return STATUS_INSUFFICIENT_RESOURCES;
    RtlCopyMemory(line->bytes, bytes, size);
    line->size = size;
    ++last_line;
    return STATUS_SUCCESS;
}

static NTSTATUS read_line(IRP* irp, void* buffer, ULONG size)
{
    struct line* line = &lines[first_line % MAXIMUM_LINES];
    const ULONG line_size = line->size;
    if (first_line == last_line)
        return complete(irp, STATUS_UNSUCCESSFUL, 0);
    if (line_size > size)
        return complete(irp, STATUS_BUFFER_TOO_SMALL, 0);
    RtlCopyMemory(buffer, line->bytes, line_size);
    ExFreePoolWithTag(line->bytes, 0x6c697551);
    ++first_line;
    return complete(irp, STATUS_SUCCESS, line_size);
}

static NTSTATUS complete_with_value(IRP* irp, void* buffer, ULONG size, ULONG value)
{
    if (size < sizeof value)
        return complete(irp, STATUS_BUFFER_TOO_SMALL, 0);
    *(ULONG*)buffer = value;
    return complete(irp, STATUS_SUCCESS, sizeof value);
}

static NTSTATUS WINAPI control(DEVICE_OBJECT* device, IRP* irp)
{
    const IO_STACK_LOCATION* request = IoGetCurrentIrpStackLocation(irp);
    const ULONG input_size = request->Parameters.DeviceIoControl.InputBufferLength;
    const ULONG output_size = request->Parameters.DeviceIoControl.OutputBufferLength;
    void* buffer = irp->AssociatedIrp.SystemBuffer;
    (void)device;
    switch (request->Parameters.DeviceIoControl.IoControlCode) {
    case PROCMON_DEVICE_LOG:
        /* The module hands over text only and wants nothing back. */
        return complete(irp, output_size == 0 ? keep_line(buffer, input_size) : STATUS_INVALID_PARAMETER, 0);
    case PROCMON_DEVICE_READ:
        return read_line(irp, buffer, output_size);
    case PROCMON_DEVICE_FAIL_NEXT:
        fail_next = TRUE;
        return complete(irp, STATUS_SUCCESS, 0);
    case PROCMON_DEVICE_HANDLES:
        return complete_with_value(irp, buffer, output_size, open_handles);
    case PROCMON_DEVICE_LINES:
        return complete_with_value(irp, buffer, output_size, lines_sent);
    default:
        return complete(irp, STATUS_INVALID_DEVICE_REQUEST, 0);
    }
}

static void WINAPI unload(DRIVER_OBJECT* driver)
{
    UNICODE_STRING link;
    RtlInitUnicodeString(&link, L"\\??\\ProcmonDebugLogger");
    IoDeleteSymbolicLink(&link);
    IoDeleteDevice(driver->DeviceObject);
}

NTSTATUS WINAPI DriverEntry(DRIVER_OBJECT* driver, UNICODE_STRING* registry_path)
{
    UNICODE_STRING name, link;
    DEVICE_OBJECT* device;
    NTSTATUS status;
    (void)registry_path;
    RtlInitUnicodeString(&name, L"\\Device\\QuillTestProcmon");
    RtlInitUnicodeString(&link, L"\\??\\ProcmonDebugLogger");
    status = IoCreateDevice(driver, 0, &name, 0x9535, 0, FALSE, &device);
    if (status)
        return status;
    status = IoCreateSymbolicLink(&link, &name);
    if (status) {
        IoDeleteDevice(device);
        return status;
    }
    driver->MajorFunction[IRP_MJ_CREATE] = create;
    driver->MajorFunction[IRP_MJ_CLOSE] = close;
    driver->MajorFunction[IRP_MJ_DEVICE_CONTROL] = control;
    driver->DriverUnload = unload;
    return STATUS_SUCCESS;
}
