#!/usr/bin/env bash
echo "usage: ./run bare-check [--quick] [--dir FOLDER]"
