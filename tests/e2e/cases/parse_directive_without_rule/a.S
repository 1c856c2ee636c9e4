	.cfi_return_column 1
