# AddressSanitizer and UndefinedBehaviorSanitizer for the test build (preset "dev").
if(MXRK7_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
  add_link_options(-fsanitize=address,undefined)
endif()
