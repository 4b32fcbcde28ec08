# What a deployment chooses, checked for form, and the version. A vendor sets its own on the command
# line, say -DTAVRIN_PANEL_DOMAIN=panel.vendor.net; no source file changes. The defaults of the first three
# are reserved for documentation.
# `cmake -DNAME=VALUE -P cmake/deployment.cmake` only checks. CMake breaks no line that begins with a blank.
cmake_minimum_required(VERSION 3.25)

set(TAVRIN_PANEL_DOMAIN "panel.example" CACHE STRING "The panel's registered domain, never tunnelled")
set(TAVRIN_DEFAULT_NODE_ADDRESS "203.0.113.10" CACHE STRING
  "IPv4 address that is pinned for a node without an address of its own")
set(TAVRIN_PAYMENT_NOTIFY_URL "https://api.panel.example" CACHE STRING
  "Where payment channels send their notifications")
set(TAVRIN_PROXY_DOMAINS
  "google.com;anthropic.com;claude.ai;claude.com;cursor.com;cursor.sh;cursorapi.com" CACHE STRING
  "Domains that stay on the proxy ahead of the rules for mainland China, in this order")
set(TAVRIN_VERSION "" CACHE STRING "Another version than the project's: three numbers with dots")

# Lower case, as rules compare it; labels of 63 characters at most, two of them at least.
function(tavrin_is_domain value result)
  set(label "[a-z0-9]([a-z0-9-]*[a-z0-9])?")
  string(LENGTH "${value}" length)
  set(${result} OFF PARENT_SCOPE)
  if(length LESS_EQUAL 253 AND value MATCHES "^(${label}\\.)+[a-z]([a-z0-9-]*[a-z0-9])$")
    string(REPLACE "." ";" labels "${value}")
    foreach(part IN LISTS labels)
      string(LENGTH "${part}" length)
      if(length GREATER 63)
        return()
      endif()
    endforeach()
    set(${result} ON PARENT_SCOPE)
  endif()
endfunction()

function(tavrin_check_domain name value)
  tavrin_is_domain("${value}" is_domain)
  if(NOT is_domain)
    message(FATAL_ERROR " ${name}: '${value}' is no domain in lower case, such as panel.example")
  endif()
endfunction()

# tavrin_check_numbers(NAME VALUE WHAT GREATEST...): as many numbers with dots as there are greatest ones.
function(tavrin_check_numbers name value what)
  string(REPLACE "." ";" numbers "${value}")
  list(LENGTH numbers count)
  list(LENGTH ARGN wanted)
  set(good ON)
  if(NOT count EQUAL wanted OR NOT value MATCHES "^(0|[1-9][0-9]*)(\\.(0|[1-9][0-9]*))*$")
    set(good OFF)
  else()
    foreach(number greatest IN ZIP_LISTS numbers ARGN)
      string(LENGTH "${number}" digits)
      if(digits GREATER 5 OR number GREATER greatest)
        set(good OFF)
      endif()
    endforeach()
  endif()
  if(NOT good)
    message(FATAL_ERROR " ${name}: '${value}' is no ${what}")
  endif()
endfunction()

function(tavrin_check_url name value)
  if(value MATCHES "^https://([^:/]*)(:([1-9][0-9]*))?(/[A-Za-z0-9._~/-]*)?$")
    set(port "${CMAKE_MATCH_3}")
    string(LENGTH "${port}" digits)
    if(digits LESS_EQUAL 5 AND NOT port GREATER 65535)
      tavrin_is_domain("${CMAKE_MATCH_1}" is_domain)
    endif()
  endif()
  if(NOT is_domain)
    message(FATAL_ERROR " ${name}: '${value}' is no address with https, such as https://api.panel.example")
  endif()
endfunction()

if(PROJECT_VERSION AND NOT TAVRIN_VERSION)
  set(TAVRIN_PRODUCT_VERSION "${PROJECT_VERSION}")
else()
  set(TAVRIN_PRODUCT_VERSION "${TAVRIN_VERSION}")
endif()
# The greatest numbers are those of Windows Installer.
if(PROJECT_VERSION OR TAVRIN_VERSION)
  tavrin_check_numbers(TAVRIN_VERSION "${TAVRIN_PRODUCT_VERSION}"
    "version of three numbers, such as 1.2.3 (255.255.65535 at most)" 255 255 65535)
endif()
tavrin_check_domain(TAVRIN_PANEL_DOMAIN "${TAVRIN_PANEL_DOMAIN}")
tavrin_check_numbers(TAVRIN_DEFAULT_NODE_ADDRESS "${TAVRIN_DEFAULT_NODE_ADDRESS}"
  "IPv4 address, such as 203.0.113.10" 255 255 255 255)
tavrin_check_url(TAVRIN_PAYMENT_NOTIFY_URL "${TAVRIN_PAYMENT_NOTIFY_URL}")
if(TAVRIN_PROXY_DOMAINS STREQUAL "")
  message(FATAL_ERROR " TAVRIN_PROXY_DOMAINS: at least one domain is wanted")
endif()
foreach(domain IN LISTS TAVRIN_PROXY_DOMAINS)
  tavrin_check_domain(TAVRIN_PROXY_DOMAINS "${domain}")
endforeach()

if(CMAKE_SCRIPT_MODE_FILE)
  return()
endif()
list(TRANSFORM TAVRIN_PROXY_DOMAINS REPLACE "(.+)" "\"\\1\"" OUTPUT_VARIABLE proxy_domain_literals)
list(JOIN proxy_domain_literals ", " proxy_domain_literals)
set(TAVRIN_GENERATED "${PROJECT_BINARY_DIR}/generated")
configure_file("${PROJECT_SOURCE_DIR}/src/common/deployment.h.in"
  "${TAVRIN_GENERATED}/src/common/deployment.h" @ONLY)
target_include_directories(tavrin_options INTERFACE "${TAVRIN_GENERATED}")
