package sample;

import java.io.IOException;
import java.net.InetAddress;
import java.net.ServerSocket;
import java.nio.charset.StandardCharsets;
import java.time.LocalTime;

/** A program for {@code java}, which knows nothing of a service: tells the time until SIGTERM. */
public final class TimeServer {
    private TimeServer() {}

    /** The argument is the port, 0 for any that is free. */
    public static void main(String[] args) throws IOException {
        try (var server = new ServerSocket(
                Integer.parseInt(args[0]), 0, InetAddress.getLoopbackAddress())) {
            Runtime.getRuntime().addShutdownHook(new Thread(() -> System.out.println("Good bye")));
            System.out.println("Listening on port " + server.getLocalPort());
            for (;;) {
                try (var client = server.accept()) {
                    var time = LocalTime.now() + "\n";
                    client.getOutputStream().write(time.getBytes(StandardCharsets.US_ASCII));
                }
            }
        }
    }
}
