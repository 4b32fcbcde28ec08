#!/usr/bin/env bash
# The form of what a deployment chooses: what CMake takes, and what it refuses with which words.
set -euo pipefail
# shellcheck source=tests/package/checks.sh
. "$(dirname "$0")/checks.sh"

check() { cmake "-D$1=$2" -P "$root/cmake/deployment.cmake"; }

takes() { succeeds "$1=$2 is taken" check "$1" "$2"; }

# refuses NAME VALUE WHAT: in one line.
refuses() {
  local output
  output=$(check "$1" "$2" 2>&1) && output="taken"
  expect "$1=$2 is refused" "$1: $3" "$(grep "^ *$1: " <<<"$output" | sed "s/^ *//")"
}

no_domain() { refuses "$1" "$2" "'$2' is no domain in lower case, such as panel.example"; }
label63=$(printf 'a%.0s' {1..63})

takes TAVRIN_PANEL_DOMAIN panel.vendor.net
takes TAVRIN_PANEL_DOMAIN xn--fiqs8s.example
takes TAVRIN_PANEL_DOMAIN "$label63.example"
for domain in '' panel Panel.example panel..example .example -a.example a-.example 'a b.example' \
  a_b.example panel.example. 203.0.113.10 'a".example' "${label63}a.example"; do
  no_domain TAVRIN_PANEL_DOMAIN "$domain"
done

takes TAVRIN_DEFAULT_NODE_ADDRESS 0.0.0.0
takes TAVRIN_DEFAULT_NODE_ADDRESS 255.255.255.255
for address in '' 1.2.3 1.2.3.4.5 256.1.1.1 01.2.3.4 1.2.3.4. a.b.c.d 2001:db8::1 1.2.3.99999999999; do
  refuses TAVRIN_DEFAULT_NODE_ADDRESS "$address" "'$address' is no IPv4 address, such as 203.0.113.10"
done

takes TAVRIN_PAYMENT_NOTIFY_URL https://pay.vendor.net:65535/a/b_c
for url in '' pay.vendor.net http://pay.vendor.net https:// https://pay https://u@pay.vendor.net \
  https://pay.vendor.net:65536 https://pay.vendor.net:0 https://pay.vendor.net: 'https://pay.vendor.net/"'; do
  refuses TAVRIN_PAYMENT_NOTIFY_URL "$url" "'$url' is no address with https, such as https://api.panel.example"
done

takes TAVRIN_PROXY_DOMAINS one.example
takes TAVRIN_PROXY_DOMAINS 'one.example;two.example'
refuses TAVRIN_PROXY_DOMAINS '' 'at least one domain is wanted'
for list in 'one.example;Two.example:Two.example' 'one.example;:' 'one.example,two.example:one.example,two.example'; do
  refuses TAVRIN_PROXY_DOMAINS "${list%%:*}" "'${list#*:}' is no domain in lower case, such as panel.example"
done

takes TAVRIN_VERSION 255.255.65535
for version in 1 1.2 1.2.3.4 v1.2.3 1.2.x 256.0.0 0.256.0 0.0.65536 01.2.3 1.2.3-rc1; do
  refuses TAVRIN_VERSION "$version" \
    "'$version' is no version of three numbers, such as 1.2.3 (255.255.65535 at most)"
done
finish
