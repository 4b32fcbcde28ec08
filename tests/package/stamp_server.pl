# stamp_server.pl DIRECTORY: a time stamp server (RFC 3161) on loopback, with the key, the certificate and
# the settings in DIRECTORY; writes its port to DIRECTORY/port. Ends after ten minutes.
use strict;
use warnings;
use IO::Socket::INET;

my $directory = $ARGV[0];
my $listener = IO::Socket::INET->new(LocalAddr => '127.0.0.1', LocalPort => 0, Listen => 5) or die "no socket: $!";
alarm 600;
open(my $port, '>', "$directory/port") or die $!;
print $port $listener->sockport;
close $port;

while (my $client = $listener->accept) {
  binmode $client;
  my $length = 0;
  while (my $line = <$client>) {
    $length = $1 if $line =~ /^Content-Length:\s*(\d+)/i;
    last if $line =~ /^\r?\n$/;
  }
  read($client, my $query, $length);
  open(my $file, '>:raw', "$directory/query") or die $!;
  print $file $query;
  close $file;
  system('openssl', 'ts', '-reply', '-config', "$directory/stamp.cnf", '-section', 'tsa', '-queryfile', "$directory/query",
    '-signer', "$directory/stamp.pem", '-inkey', "$directory/stamp-key.pem", '-out', "$directory/reply");
  open(my $reply, '<:raw', "$directory/reply") or die $!;
  my $body = do { local $/; <$reply> };
  print $client "HTTP/1.1 200 OK\r\nContent-Type: application/timestamp-reply\r\nContent-Length: ", length($body),
    "\r\nConnection: close\r\n\r\n", $body;
  close $client;
}
