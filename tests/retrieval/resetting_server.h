// Answers one connection with headers and then breaks it off without good order.
#pragma once

#include <winsock2.h>

#include <gtest/gtest.h>

#include <string>
#include <thread>

namespace quill::test {

class resetting_server
{
public:
    resetting_server() : listener_(socket(AF_INET, SOCK_STREAM, IPPROTO_TCP))
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(bind(listener_, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        EXPECT_EQ(listen(listener_, 1), 0);
        int size = sizeof address;
        getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size);
        url = L"http://127.0.0.1:" + std::to_wstring(ntohs(address.sin_port)) + L"/a.pdf";
        thread_ = std::thread([this] { answer(); });
    }
    ~resetting_server()
    {
        closesocket(listener_);
        thread_.join();
    }

    std::wstring url;

private:
    void answer() const
    {
        const SOCKET connection = accept(listener_, nullptr, nullptr);
        std::string request;
        char byte = 0;
        while (!request.ends_with("\r\n\r\n") && recv(connection, &byte, 1, 0) == 1)
            request += byte;
        const std::string headers = "HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n";
        send(connection, headers.data(), static_cast<int>(headers.size()), 0);
        const linger abort{1, 0};
        setsockopt(connection, SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&abort), sizeof abort);
        closesocket(connection);
    }

    SOCKET listener_;
    std::thread thread_;
};

} // namespace quill::test
